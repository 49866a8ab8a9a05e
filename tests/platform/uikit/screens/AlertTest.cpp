#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/uikit/screens/UIAlertController.h"

namespace ostrel {
namespace {

using ActionStyle = UIAlertAction::Style;
constexpr auto normal = ActionStyle::defaultStyle, cancel = ActionStyle::cancel, destructive = ActionStyle::destructive;

class AlertTest : public ControllerTest {
protected:
    /// Presents an alert whose actions are named by their numbers and write those into `chosen`.
    std::shared_ptr<UIAlertController> ask(const std::vector<ActionStyle>& styles,
                                           UIAlertController::Style style = UIAlertController::Style::alert,
                                           const std::string& message = "Can't comment before login.") {
        chosen.clear();
        auto alert = make<UIAlertController>("Prohibit", message, style);
        for (std::size_t i = 0; i < styles.size(); ++i) {
            alert->addAction({std::to_string(i), styles[i], [this, i] {
                                  chosen.push_back(static_cast<int>(i));
                                  presentedThen = window().rootViewController()->presentedViewController() != nullptr;
                              }});
        }
        window().rootViewController()->presentViewController(alert, true);
        return alert;
    }
    CGRect shownFrame(const UIView& view) const { return view.convertRectToView(view.bounds(), nullptr); }
    UIView* button(UIViewController& alert, const std::string& title) {
        return labelled(*alert.view(), AccessibilityRole::button, title);
    }

    std::vector<int> chosen;
    bool presentedThen = false;
};

TEST_F(AlertTest, KeysPressThePreferredOrTheCancellingAction) {
    struct Case {
        std::vector<ActionStyle> styles;
        UIKeyCode code;
        std::vector<int> chosen;
    };
    const Case cases[] = {
        {{cancel, normal}, UIKeyCode::enter, {1}},      {{normal, normal, cancel}, UIKeyCode::enter, {0}},
        {{destructive, cancel}, UIKeyCode::enter, {1}}, {{destructive}, UIKeyCode::enter, {}},
        {{normal, cancel}, UIKeyCode::escape, {1}},     {{normal, cancel}, UIKeyCode::back, {1}},
        {{normal, destructive}, UIKeyCode::escape, {}},
    };
    show(screen("A"));
    for (const Case& each : cases) {
        for (const double wait : {0.0, 1.0}) {
            const auto alert = ask(each.styles);
            advance(wait);
            // However often a key is hit, the answer is given once.
            for (int i = 0; i < 3; ++i) {
                key(each.code);
                advance(0.01);
            }
            EXPECT_TRUE(chosen.empty()) << "the handler waits for the alert to leave";
            settle();
            EXPECT_EQ(chosen, each.chosen);
            EXPECT_FALSE(!each.chosen.empty() && presentedThen);
            window().rootViewController()->dismissViewControllerAnimated(false);
        }
    }
}

TEST_F(AlertTest, ATapGivesTheAnswerOnceAndBesideItNone) {
    show(screen("A"));
    const auto alert = ask({destructive, cancel});
    settle();
    EXPECT_EQ(log, CallLog()) << "the screen below stays";
    tap({3, 3});
    settle();
    EXPECT_TRUE(alert->isAppeared());
    UIView* const login = button(*alert, "0");
    press(login);
    advance(0.05);
    press(login);
    settle();
    EXPECT_EQ(chosen, std::vector<int>{0});
    EXPECT_EQ(alert->presentingViewController(), nullptr);
}

TEST_F(AlertTest, ButtonsStandBesideOrBelowEachOtherWithTheCancellingOneInItsPlace) {
    show(screen("A"));
    struct Case {
        std::vector<ActionStyle> styles;
        const char *first, *last;  ///< from left to right, or from top to bottom
        bool sideBySide;
    };
    for (const Case& each : {Case{{normal, cancel}, "1", "0", true}, Case{{cancel, normal}, "0", "1", true},
                             Case{{cancel, normal, normal}, "1", "0", false}, Case{{normal, normal}, "0", "1", true}}) {
        const auto alert = ask(each.styles);
        settle();
        const CGRect first = shownFrame(*button(*alert, each.first)), last = shownFrame(*button(*alert, each.last));
        if (each.sideBySide) {
            EXPECT_EQ(first.minY(), last.minY());
            EXPECT_EQ(first.maxX(), last.minX());
        } else {
            EXPECT_GE(last.minY(), first.maxY());
            EXPECT_EQ(first.minX(), last.minX());
        }
        EXPECT_GE(first.height(), 44);
        EXPECT_EQ(shownFrame(*alert->view()).width(), 270);
        EXPECT_EQ(last.maxY(), shownFrame(*alert->view()).maxY());
        window().rootViewController()->dismissViewControllerAnimated(false);
    }
}

TEST_F(AlertTest, LongTextsAndManyActionsStayInTheWindow) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad}) {
        for (const auto style : {UIAlertController::Style::alert, UIAlertController::Style::actionSheet}) {
            UIDevice::currentDevice().setUserInterfaceIdiom(idiom);
            show(screen("A"), {320, 360});
            std::string text;
            for (int i = 0; i < 400; ++i) text += "word ";
            const auto alert = ask(std::vector<ActionStyle>(9, normal), style, text);
            alert->addAction({"No", cancel, {}});
            settle();
            const CGRect window{0, 0, 320, 360}, frame = shownFrame(*alert->view());
            EXPECT_EQ(frame.intersection(window), frame);
            // Tab reaches the last of them and brings it on screen.
            for (int i = 0; i < 9; ++i) key(UIKeyCode::tab);
            settle();
            UIView* const last = button(*alert, "8");
            ASSERT_NE(last, nullptr);
            EXPECT_TRUE(find(*alert->view(), [&](UIView& view) { return &view == this->window().focusedView(); }));
            EXPECT_GE(shownFrame(*last).minY(), frame.minY());
            EXPECT_LE(shownFrame(*last).maxY(), frame.maxY() + 0.5);
            this->window().setRootViewController(nullptr);
        }
    }
}

TEST_F(AlertTest, ReturnInItsFieldsGoesOnAndThenAnswers) {
    show(screen("A"));
    auto alert = make<UIAlertController>("Name", "", UIAlertController::Style::alert);
    alert->addTextField([](UITextField& field) { field.setPlaceholder("First"); });
    alert->addTextField([](UITextField& field) { field.setPlaceholder("Last"); });
    std::string name;
    alert->addAction({"Cancel", cancel, {}});
    alert->addAction({"OK", normal, [&, weak = std::weak_ptr(alert)] { name = weak.lock()->textFields()[1]->text(); }});
    window().rootViewController()->presentViewController(alert, true);
    settle();
    EXPECT_TRUE(alert->textFields()[0]->isFirstResponder());
    window().textInputReturn(alert->textFields()[0]->tag());
    EXPECT_TRUE(alert->textFields()[1]->isFirstResponder());
    window().textInputChanged(alert->textFields()[1]->tag(), "Lovelace");
    window().textInputReturn(alert->textFields()[1]->tag());
    settle();
    EXPECT_EQ(name, "Lovelace");
    const std::weak_ptr<UIAlertController> gone = alert;
    alert.reset();
    EXPECT_TRUE(gone.expired());
}

TEST_F(AlertTest, AnActionSheetSeparatesTheCancellingButtonOnAPhoneOnly) {
    for (const bool isPhone : {true, false}) {
        UIDevice::currentDevice().setUserInterfaceIdiom(isPhone ? UIUserInterfaceIdiom::phone
                                                                : UIUserInterfaceIdiom::pad);
        show(screen("A"));
        const auto sheet = ask({normal, destructive, cancel}, UIAlertController::Style::actionSheet);
        settle();
        EXPECT_EQ(button(*sheet, "2") != nullptr, isPhone);
        if (isPhone) {
            EXPECT_EQ(shownFrame(*button(*sheet, "2")).maxY(), 667 - 8);
            EXPECT_GT(shownFrame(*button(*sheet, "2")).minY(), shownFrame(*button(*sheet, "1")).maxY());
        }
        tap({3, 3});
        settle();
        EXPECT_EQ(chosen, std::vector<int>{2}) << "a tap beside cancels";
        window().setRootViewController(nullptr);
    }
}

TEST_F(AlertTest, ArrowsMoveBetweenItsButtons) {
    show(screen("A"));
    const auto alert = ask({normal, normal, cancel});
    settle();
    key(UIKeyCode::down);
    EXPECT_EQ(window().focusedView(), button(*alert, "0"));
    key(UIKeyCode::down);
    key(UIKeyCode::enter);
    settle();
    EXPECT_EQ(chosen, std::vector<int>{1});
}

}  // namespace
}  // namespace ostrel
