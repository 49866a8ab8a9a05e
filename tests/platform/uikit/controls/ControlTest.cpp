#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/controls/UISegmentedControl.h"
#include "platform/uikit/text/UITextView.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

using Log = std::vector<std::string>;

const std::pair<UIControlEvent, const char*> eventNames[] = {{UIControlEvent::touchDown, "down"},
                                                             {UIControlEvent::touchUpInside, "inside"},
                                                             {UIControlEvent::touchUpOutside, "outside"},
                                                             {UIControlEvent::touchCancel, "cancel"},
                                                             {UIControlEvent::valueChanged, "value"}};

class ControlTest : public ::testing::Test {
protected:
    template <class Control>
    std::shared_ptr<Control> show(std::shared_ptr<Control> control, CGRect frame) {
        control->setFrame(frame);
        for (const auto& [event, name] : eventNames) {
            control->addTarget([this, text = std::string(name)] { log.push_back(text); }, event);
        }
        platform.window().addSubview(control);
        platform.settle();
        return control;
    }
    Log log;  // declared first: the window still reports in its destructor
    HeadlessPlatform platform;
};

TEST_F(ControlTest, EventsFollowTheFinger) {
    const auto control = show(make<UIControl>(), {100, 100, 50, 50});
    const auto direct = UITouchType::direct;
    const auto pointer = UITouchType::pointer;
    const auto primary = UIButtonMask::primary;
    const std::tuple<const char*, UITouchType, UIButtonMask, CGPoint, Log> cases[] = {
        {"stays", direct, primary, {110, 110}, {"down", "inside"}},
        {"a finger may leave a little", direct, primary, {170, 110}, {"down", "inside"}},
        {"but not far", direct, primary, {180, 110}, {"down", "outside"}},
        {"a pointer is exact", pointer, primary, {151, 110}, {"down", "outside"}},
        {"a pointer inside", pointer, primary, {149, 110}, {"down", "inside"}},
        {"the secondary button presses nothing", pointer, UIButtonMask::secondary, {110, 110}, {}},
    };
    for (const auto& [what, type, button, to, expected] : cases) {
        log.clear();
        platform.touchType = type;
        platform.touchButton = button;
        platform.drag({110, 110}, to);
        EXPECT_EQ(log, expected) << what;
        EXPECT_FALSE(control->isHighlighted()) << what;
    }
}

TEST_F(ControlTest, StatesHaveAnOrderAndDisablingEndsAPress) {
    const auto control = show(make<UIControl>(), {0, 0, 50, 50});
    control->setSelected(true);
    EXPECT_EQ(control->controlState(), UIControlState::selected);
    platform.touch(UITouchPhase::began, {10, 10});
    EXPECT_EQ(control->controlState(), UIControlState::highlighted);
    platform.touch(UITouchPhase::moved, {200, 10});
    EXPECT_EQ(control->controlState(), UIControlState::selected);
    platform.touch(UITouchPhase::moved, {10, 10});
    control->setEnabled(false);
    platform.touch(UITouchPhase::ended, {10, 10});
    EXPECT_EQ(control->controlState(), UIControlState::disabled);
    EXPECT_EQ(log, (Log{"down"}));
    platform.tap({10, 10});
    EXPECT_EQ(log, (Log{"down"}));
    EXPECT_TRUE(control->accessibility().disabled);
    platform.window().setFocusedView(control.get(), true);
    EXPECT_FALSE(platform.key(UIKeyCode::space));
}

TEST_F(ControlTest, ATargetMayEndTheControl) {
    auto control = show(make<UIControl>(), {0, 0, 50, 50});
    std::weak_ptr<UIControl> alive = control;
    control->addTarget(
        [&] {
            alive.lock()->removeAllTargets();
            alive.lock()->removeFromSuperview();
        },
        UIControlEvent::touchUpInside);
    control.reset();
    platform.tap({10, 10});
    EXPECT_TRUE(alive.expired());
    EXPECT_EQ(log, (Log{"down", "inside"}));
}

TEST_F(ControlTest, AButtonLooksLikeItsStates) {
    const auto button = show(make<UIButton>(), {0, 0, 100, 40});
    button->setTitle("Send");
    button->setBackgroundColor(UIColor::tint(), UIControlState::normal);
    const auto expectLook = [&](const char* what, const char* title, double alpha, UIColor background) {
        platform.settle();
        EXPECT_EQ(button->titleLabel()->text(), title) << what;
        EXPECT_EQ(button->titleLabel()->alpha(), alpha) << what;
        EXPECT_EQ(button->backgroundColor(), background) << what;
        EXPECT_EQ(button->accessibility().label, title) << what;
    };
    expectLook("normal", "Send", 1, UIColor::tint());
    button->setHighlighted(true);
    expectLook("pressed without a look of its own", "Send", 0.55, UIColor::tint());
    button->setBackgroundColor(UIColor::black(), UIControlState::highlighted);
    expectLook("pressed with a look of its own", "Send", 1, UIColor::black());
    button->setHighlighted(false);
    button->setEnabled(false);
    expectLook("disabled", "Send", 0.35, UIColor::tint());
    button->setTitle("Sent", UIControlState::disabled);
    expectLook("disabled with its own title", "Sent", 1, UIColor::tint());
    button->setEnabled(true);
    button->setSelected(true);
    expectLook("selected without a look of its own", "Send", 1, UIColor::tint());
    EXPECT_EQ(button->titleForState(UIControlState::selected), "Send");

    const auto row = show(make<UIButton>(), {0, 100, 100, 40});
    row->setBackgroundColor(UIColor::white());
    row->setBackgroundColor(UIColor::fill(), UIControlState::highlighted);
    row->setHighlighted(true);
    EXPECT_EQ(row->backgroundColor(), UIColor::fill());
    row->setHighlighted(false);
    EXPECT_EQ(row->backgroundColor(), UIColor::white());
}

TEST_F(ControlTest, AButtonPutsItsImageBesideItsTitle) {
    const auto button = show(make<UIButton>(UIButton::Type::system), {0, 0, 200, 40});
    button->setTitleFont(UIFont::system(20));
    button->setTitle("ab");
    button->setImage(UIImage::systemImageNamed("link"));
    const CGFloat title = 20, image = 24, padding = 4;
    EXPECT_EQ(button->sizeThatFits({}).width, image + padding + title);
    const std::tuple<NSTextAlignment, CGFloat, CGFloat, CGFloat> cases[] = {{NSTextAlignment::center, 200, 76, title},
                                                                            {NSTextAlignment::left, 200, 0, title},
                                                                            {NSTextAlignment::right, 200, 152, title},
                                                                            {NSTextAlignment::center, 40, 0, 12},
                                                                            {NSTextAlignment::center, 10, 0, 0}};
    for (const auto& [alignment, width, imageX, titleWidth] : cases) {
        button->setContentAlignment(alignment);
        button->setFrame({0, 0, width, 40});
        platform.settle();
        EXPECT_EQ(button->imageView()->frame().minX(), imageX) << width;
        EXPECT_EQ(button->titleLabel()->frame().width(), titleWidth) << width;
        EXPECT_LE(button->imageView()->frame().maxX(), width);
    }
    button->setFrame({0, 0, 200, 40});
    button->setContentAlignment(NSTextAlignment::left);
    button->setContentInsets({.left = 10});
    button->titleLabel()->setFont(UIFont::system(40));
    platform.settle();
    EXPECT_EQ(button->imageView()->frame().minX(), 10);
    EXPECT_EQ(button->titleLabel()->frame(), (CGRect{38, -8, 40, 56}));
}

TEST_F(ControlTest, ASegmentIsSelectedByFingerAndArrow) {
    const auto control =
        show(make<UISegmentedControl>(std::vector<std::string>{"One", "Two", "Three"}), {0, 0, 300, 32});
    platform.tap({150, 10});
    EXPECT_EQ(control->selectedSegmentIndex(), 1u);
    platform.tap({150, 10});
    EXPECT_EQ(std::count(log.begin(), log.end(), "value"), 1) << "a press on the selected segment changes nothing";
    platform.window().setFocusedView(control.get(), true);
    for (int i = 0; i < 4; ++i) EXPECT_TRUE(platform.key(UIKeyCode::right));
    EXPECT_EQ(control->selectedSegmentIndex(), 2u);
    EXPECT_TRUE(platform.key(UIKeyCode::left));
    EXPECT_EQ(control->selectedSegmentIndex(), 1u);
    control->setSelectedSegmentIndex(0);
    EXPECT_EQ(std::count(log.begin(), log.end(), "value"), 3) << "the program's choice is not reported";
    control->setSelectedSegmentIndex(7);
    EXPECT_EQ(control->selectedSegmentIndex(), 0u);
    EXPECT_EQ(control->sizeThatFits({}).width, (35 + 28) * 3 + 4);
}

TEST_F(ControlTest, LabelsAndTextViewsShowTheirText) {
    const auto label = make<UILabel>(CGRect{0, 0, 40, 100});
    label->setFont(UIFont::system(10));
    label->setText("aaaa bbbb cccc");
    EXPECT_EQ(label->sizeThatFits({40, 0}), (CGSize{70, 14})) << "one line ignores the width";
    label->setNumberOfLines(0);
    EXPECT_EQ(label->sizeThatFits({40, 0}), (CGSize{20, 42}));
    label->setNumberOfLines(2);
    EXPECT_EQ(label->sizeThatFits({40, 0}), (CGSize{20, 28}));

    const auto text = make<UITextView>(CGRect{0, 0, 100, 100});
    text->setFont(UIFont::system(10));
    text->setText("aaaa bbbb");
    text->setTextContainerInset({1, 2, 3, 4});
    text->setContentInset({-6, 5, 0, 0});
    EXPECT_EQ(text->sizeThatFits({36, 0}), (CGSize{26, 32}));
    platform.window().addSubview(text);
    platform.settle();
    const auto contentOf = [&] { return platform.backend().node(text->tag())->state->content; };
    ASSERT_TRUE(std::holds_alternative<TextInputContent>(contentOf()));
    text->setEditable(false);
    platform.settle();
    const auto atRest = std::get<TextContent>(contentOf());
    EXPECT_EQ(atRest.insets, (UIEdgeInsets{-5, 7, 3, -1})) << "moved, and as wide as before";
    EXPECT_FALSE(text->becomeFirstResponder());
}

TEST_F(ControlTest, AWheelThatStoppedIsHidden) {
    const auto wheel = make<UIActivityIndicatorView>();
    platform.window().addSubview(wheel);
    EXPECT_TRUE(wheel->isHidden());
    wheel->startAnimating();
    platform.settle();
    EXPECT_FALSE(wheel->isHidden());
    EXPECT_TRUE(std::get<SpinnerContent>(platform.backend().node(wheel->tag())->state->content).animating);
    wheel->setHidesWhenStopped(false);
    wheel->stopAnimating();
    EXPECT_FALSE(wheel->isHidden());
}

}  // namespace

}  // namespace ostrel
