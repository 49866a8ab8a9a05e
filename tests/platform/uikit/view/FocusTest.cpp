#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/view/UIScrollView.h"

#include <gtest/gtest.h>

namespace ostrel {

namespace {

using Log = std::vector<std::string>;

class KeyedController final : public UIViewController {
public:
    KeyedController(std::string name, Log& log) : name_(std::move(name)), log_(log) {}
    bool pressesBegan(const UIPress& press) override {
        log_.push_back(name_ + " key " + press.key.characters);
        return press.key.characters == "u";
    }
    bool cancelOperation() override {
        log_.push_back(name_ + " cancel");
        return cancels;
    }
    bool cancels = false;

private:
    std::string name_;
    Log& log_;
};

/// A root screen with a field, a button and another field.
class FocusTest : public ::testing::Test {
protected:
    void SetUp() override {
        window.setRootViewController(root);
        name->setFrame({0, 0, 200, 40});
        button->setFrame({0, 50, 200, 40});
        secret->setFrame({0, 100, 200, 40});
        for (const std::shared_ptr<UIView>& view : {std::shared_ptr<UIView>(name), {button}, {secret}})
            root->view()->addSubview(view);
        const std::pair<UIControlEvent, const char*> events[] = {{UIControlEvent::editingDidBegin, "begin"},
                                                                 {UIControlEvent::editingDidEnd, "end"},
                                                                 {UIControlEvent::editingChanged, "changed"}};
        for (const auto& [event, text] : events)
            name->addTarget([this, t = std::string(text)] { log.push_back(t); }, event);
        button->addTarget([this] { log.push_back("pressed"); }, UIControlEvent::touchUpInside);
        platform.settle();
    }
    Log taken() { return std::exchange(log, {}); }
    UIView* afterTab(unsigned modifiers = modifierNone) {
        platform.key(UIKeyCode::tab, modifiers);
        return window.focusedView();
    }
    const TextInputContent& editorOf(const UIView& view) {
        platform.settle();
        return std::get<TextInputContent>(platform.backend().node(view.tag())->state->content);
    }

    Log log;  // declared first: the window still reports in its destructor
    HeadlessPlatform platform;
    UIWindow& window = platform.window();
    std::shared_ptr<KeyedController> root = make<KeyedController>("root", log);
    std::shared_ptr<UITextField> name = make<UITextField>(), secret = make<UITextField>();
    std::shared_ptr<UIButton> button = make<UIButton>(UIButton::Type::system);
};

TEST_F(FocusTest, TabMovesTheFocusInTheOrderOfTheTree) {
    EXPECT_EQ(afterTab(), name.get());
    EXPECT_EQ(window.firstResponder(), name.get());
    EXPECT_EQ(afterTab(), button.get());
    EXPECT_EQ(window.firstResponder(), nullptr);
    EXPECT_EQ(afterTab(), secret.get());
    EXPECT_EQ(afterTab(), name.get());
    EXPECT_EQ(afterTab(modifierShift), secret.get());
    button->setEnabled(false);
    EXPECT_EQ(afterTab(modifierShift), name.get());
    secret->setHidden(true);
    EXPECT_EQ(afterTab(), name.get());
}

TEST_F(FocusTest, TheRingIsForTheKeyboard) {
    const auto plain = button->subviews().size();
    platform.tap(*button);
    EXPECT_EQ(window.focusedView(), button.get());
    EXPECT_EQ(button->subviews().size(), plain);
    window.setFocusedView(nullptr, false);
    window.setFocusedView(button.get(), true);
    ASSERT_EQ(button->subviews().size(), plain + 1);
    EXPECT_EQ(button->subviews().back()->borderWidth(), 2);
    button->setFrame({0, 0, 300, 60});
    EXPECT_EQ(button->subviews().back()->frame(), (CGRect{0, 0, 300, 60}));
    afterTab();
    EXPECT_EQ(button->subviews().size(), plain);
}

TEST_F(FocusTest, ReturnAndSpacePressTheFocusedControl) {
    window.setFocusedView(button.get(), true);
    taken();
    EXPECT_TRUE(platform.key(UIKeyCode::enter));
    EXPECT_TRUE(platform.key(UIKeyCode::space));
    UIPress held;
    held.key.code = UIKeyCode::space;
    held.isRepeat = true;
    window.sendKey(held);
    platform.key(UIKeyCode::enter, modifierAlternate);
    EXPECT_EQ(taken(), (Log{"pressed", "pressed", "root key "}));
}

TEST_F(FocusTest, KeysGoUpToTheControllerAndEscapeAsksItToCancel) {
    EXPECT_TRUE(platform.key(UIKeyCode::other, 0, "u"));
    EXPECT_FALSE(platform.key(UIKeyCode::other, 0, "v"));
    EXPECT_FALSE(platform.key(UIKeyCode::escape));
    root->cancels = true;
    EXPECT_TRUE(platform.key(UIKeyCode::escape));
    EXPECT_EQ(taken(), (Log{"root key u", "root key v", "root key ", "root cancel", "root key ", "root cancel"}));
    platform.tap(*name);
    taken();
    EXPECT_TRUE(platform.key(UIKeyCode::escape)) << "also from within a field";
    EXPECT_EQ(taken(), (Log{"root key ", "root cancel"}));
}

TEST_F(FocusTest, KeysWithoutAResponderScrollTheTopmostScreen) {
    const auto back = make<UIScrollView>(CGRect{0, 200, 200, 100});
    const auto front = make<UIScrollView>(CGRect{0, 200, 200, 100});
    for (const auto& scroll : {back, front}) {
        scroll->setContentSize({200, 1000});
        root->view()->addSubview(scroll);
    }
    const auto scrolls = [&](const UIScrollView& scroll) {
        const CGFloat before = scroll.contentOffset().y;
        const bool used = platform.key(UIKeyCode::pageDown);
        platform.advance(1);
        EXPECT_EQ(used, scroll.contentOffset().y > before);
        return used;
    };
    window.setFocusedView(nullptr, false);
    EXPECT_TRUE(scrolls(*front));
    EXPECT_EQ(back->contentOffset().y, 0) << "only the frontmost";
    EXPECT_TRUE(platform.key(UIKeyCode::end));
    EXPECT_TRUE(platform.key(UIKeyCode::home));
    front->setHidden(true);
    EXPECT_TRUE(scrolls(*back));
    window.setFocusedView(button.get(), true);
    EXPECT_FALSE(scrolls(*back)) << "the focused button gets the key";
    window.setFocusedView(nullptr, false);
    name->becomeFirstResponder();
    EXPECT_FALSE(scrolls(*back)) << "the editor gets the key";
    name->resignFirstResponder();
    window.setFocusedView(nullptr, false);
    const auto other = make<UIViewController>();
    root->presentViewController(other, false);
    platform.advance(1);
    EXPECT_FALSE(scrolls(*back)) << "another screen is above it";
}

TEST_F(FocusTest, APresentationKeepsKeysAndFocusToItself) {
    platform.tap(*name);
    EXPECT_TRUE(name->isFirstResponder());
    const auto sheet = make<KeyedController>("sheet", log);
    const auto inside = make<UIButton>();
    const auto container = make<UIView>(CGRect{0, 0, 375, 667});
    sheet->view()->setFrame(container->bounds());
    sheet->view()->addSubview(inside);
    container->addSubview(sheet->view());
    window.addSubview(container);
    window.pushModalView(container.get());
    taken();
    EXPECT_EQ(window.firstResponder(), nullptr);
    EXPECT_EQ(afterTab(), inside.get());
    EXPECT_EQ(afterTab(), inside.get());
    root->cancels = true;
    EXPECT_FALSE(platform.key(UIKeyCode::escape)) << "the screen behind is not asked";
    for (const std::string& line : taken()) EXPECT_NE(line, "root cancel");

    window.popModalView(container.get());
    container->removeFromSuperview();
    EXPECT_TRUE(name->isFirstResponder()) << "the first responder is restored";
}

TEST_F(FocusTest, AFieldReportsItsEditing) {
    EXPECT_FALSE(platform.type("lost"));
    platform.tap(*name);
    EXPECT_TRUE(editorOf(*name).focused);
    EXPECT_TRUE(platform.type("An"));
    EXPECT_TRUE(platform.type("na"));
    EXPECT_TRUE(platform.typeOver("Anna"));
    EXPECT_EQ(name->text(), "Anna");
    platform.tap(*button);
    EXPECT_TRUE(name->isFirstResponder()) << "a pressed button does not end the editing";
    platform.tap(*secret);
    EXPECT_EQ(taken(), (Log{"begin", "changed", "changed", "pressed", "end"}));
    EXPECT_FALSE(editorOf(*name).focused);
    EXPECT_TRUE(editorOf(*secret).focused);

    window.textInputFocusChanged(name->tag(), true);
    EXPECT_TRUE(name->isFirstResponder());
    window.textInputFocusChanged(secret->tag(), false);
    EXPECT_TRUE(name->isFirstResponder()) << "a late report of the former editor";
    name->removeFromSuperview();
    EXPECT_EQ(window.firstResponder(), nullptr);
    EXPECT_EQ(taken(), (Log{"begin", "end"}));
    window.textInputChanged(name->tag(), "late");
    EXPECT_EQ(name->text(), "Anna");
}

TEST_F(FocusTest, OnlyTheProgramsTextIsANewRevision) {
    const auto revision = [&] { return editorOf(*name).revision; };
    platform.tap(*name);
    const auto first = revision();
    platform.type("a");
    EXPECT_EQ(revision(), first);
    name->setText("ab");
    EXPECT_EQ(revision(), first + 1);
    name->setText("ab");
    EXPECT_EQ(revision(), first + 1);
    name->setMaximumLength(3);
    platform.typeOver("a\xF0\x9F\x98\x80z");
    EXPECT_EQ(name->text(), "a\xF0\x9F\x98\x80") << "a surrogate pair counts as two";
    EXPECT_EQ(revision(), first + 2) << "the editor has to drop what is too long";
    name->setEnabled(false);
    EXPECT_FALSE(name->isFirstResponder());
    window.textInputChanged(name->tag(), "x");
    EXPECT_EQ(name->text(), "a\xF0\x9F\x98\x80");
}

TEST_F(FocusTest, ReturnEndsEditingForATargetAndIsAKeyWithoutOne) {
    platform.tap(*name);
    taken();
    platform.pressReturn();
    EXPECT_EQ(taken(), (Log{"root key \r"}));
    EXPECT_TRUE(name->isFirstResponder());
    name->addTarget([this] { log.push_back("exit"); }, UIControlEvent::editingDidEndOnExit);
    platform.pressReturn();
    EXPECT_EQ(taken(), (Log{"exit", "end"}));
    EXPECT_FALSE(name->isFirstResponder());
    name->addTarget([this] { secret->becomeFirstResponder(); }, UIControlEvent::editingDidEndOnExit);
    platform.tap(*name);
    platform.key(UIKeyCode::enter);
    EXPECT_TRUE(secret->isFirstResponder()) << "the target has chosen the next first responder";
}

}  // namespace

}  // namespace ostrel
