#include "tests/platform/uikit/screens/ControllerTestSupport.h"

#include "platform/foundation/values/Text.h"
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

    std::vector<int> chosen;
    bool presentedThen = false;
};

TEST_F(AlertTest, KeysPressThePreferredOrTheCancellingAction) {
    // The actions, how often the arrow first moves the focus down, the key, and the action that the key chooses.
    const std::tuple<std::vector<ActionStyle>, int, UIKeyCode, std::vector<int>> cases[] = {
        {{cancel, normal}, 0, UIKeyCode::enter, {1}},      {{normal, normal, cancel}, 0, UIKeyCode::enter, {0}},
        {{destructive, cancel}, 0, UIKeyCode::enter, {1}}, {{destructive}, 0, UIKeyCode::enter, {}},
        {{normal, cancel}, 0, UIKeyCode::escape, {1}},     {{normal, cancel}, 0, UIKeyCode::back, {1}},
        {{normal, destructive}, 0, UIKeyCode::escape, {}}, {{normal, normal, cancel}, 2, UIKeyCode::enter, {1}},
    };
    show(screen("A"));
    for (const auto& [styles, downs, code, expected] : cases) {
        for (const double wait : {0.0, 1.0}) {
            const auto alert = ask(styles);
            advance(wait);
            for (int i = 0; i < downs; ++i) key(UIKeyCode::down);
            // However often a key is hit, the answer is given once.
            for (int i = 0; i < 3; ++i) {
                key(code);
                advance(0.01);
            }
            EXPECT_TRUE(chosen.empty()) << "the handler waits for the alert to leave";
            settle();
            EXPECT_EQ(chosen, expected);
            EXPECT_FALSE(!expected.empty() && presentedThen);
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
    // The actions, and the first and the last button from left to right or from top to bottom.
    using Case = std::tuple<std::vector<ActionStyle>, const char*, const char*>;
    for (const auto& [styles, firstTitle, lastTitle] :
         {Case{{normal, cancel}, "1", "0"}, Case{{cancel, normal}, "0", "1"}, Case{{cancel, normal, normal}, "1", "0"},
          Case{{normal, normal}, "0", "1"}}) {
        const auto alert = ask(styles);
        settle();
        const CGRect first = frameOf(*button(*alert, firstTitle)), last = frameOf(*button(*alert, lastTitle));
        const bool sideBySide = styles.size() == 2;
        EXPECT_EQ(sideBySide ? last.minX() : first.minX(), sideBySide ? first.maxX() : last.minX());
        EXPECT_TRUE(sideBySide ? last.minY() == first.minY() : last.minY() >= first.maxY());
        EXPECT_GE(first.height(), 44);
        EXPECT_EQ(frameOf(*alert).width(), 270);
        EXPECT_EQ(last.maxY(), frameOf(*alert).maxY());
        window().rootViewController()->dismissViewControllerAnimated(false);
    }
}

TEST_F(AlertTest, LongTextsAndManyActionsStayInTheWindow) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad}) {
        for (const auto style : {UIAlertController::Style::alert, UIAlertController::Style::actionSheet}) {
            use(idiom);
            show(screen("A"), {320, 360});
            std::vector<ActionStyle> actions(9, normal);
            const auto alert = ask(actions, style, replacingOccurrences(std::string(400, 'w'), "w", "word "));
            alert->addAction({"No", cancel, {}});
            settle();
            const CGRect frame = frameOf(*alert);
            EXPECT_EQ(frame.intersection({0, 0, 320, 360}), frame);
            // Tab reaches the last of them and brings it on screen.
            for (int i = 0; i < 9; ++i) key(UIKeyCode::tab);
            settle();
            UIView* const last = button(*alert, "8");
            ASSERT_NE(last, nullptr);
            ASSERT_TRUE(window().focusedView());
            EXPECT_TRUE(window().focusedView()->isDescendantOfView(*alert->view()));
            EXPECT_GE(frameOf(*last).minY(), frame.minY());
            EXPECT_LE(frameOf(*last).maxY(), frame.maxY() + 0.5);
        }
    }
}

TEST_F(AlertTest, ReturnInItsFieldsGoesOnAndThenAnswers) {
    show(screen("A"));
    const auto alert = make<UIAlertController>("Name", "", UIAlertController::Style::alert);
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
    EXPECT_EQ(alert.use_count(), 1) << "nobody else keeps it";
}

TEST_F(AlertTest, AnActionSheetSeparatesTheCancellingButtonOnAPhoneOnly) {
    for (const bool isPhone : {true, false}) {
        use(isPhone ? UIUserInterfaceIdiom::phone : UIUserInterfaceIdiom::pad);
        show(screen("A"));
        const auto sheet = ask({normal, destructive, cancel}, UIAlertController::Style::actionSheet);
        settle();
        UIView* const separate = button(*sheet, "2");
        ASSERT_EQ(separate != nullptr, isPhone);
        EXPECT_TRUE(!separate || frameOf(*separate).maxY() == 667 - 8);
        EXPECT_TRUE(!separate || frameOf(*separate).minY() > frameOf(*button(*sheet, "1")).maxY());
        tap({3, 3});
        settle();
        EXPECT_EQ(chosen, std::vector<int>{2}) << "a tap beside cancels";
    }
}

}  // namespace
}  // namespace ostrel
