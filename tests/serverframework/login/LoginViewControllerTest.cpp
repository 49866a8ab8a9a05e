#include "serverframework/login/LoginViewController.h"

#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIWindow.h"
#include "serverframework/login/LoginLayout.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {
namespace {

/// Keeps what it is asked, to be answered by the test.
class ScriptedSignIn final : public SignInService {
public:
    void signIn(const std::string& name, const std::string& password, SignInHandler handler) override {
        calls.push_back("in " + name + "/" + password);
        answer = std::move(handler);
    }
    void signUp(const std::string& name, const std::string& password, SignInHandler handler) override {
        calls.push_back("up " + name + "/" + password);
        answer = std::move(handler);
    }
    void abandon() override { calls.emplace_back("abandon"); }

    std::vector<std::string> calls;
    SignInHandler answer;
};

/// The login screen as the module shows it: in a navigation controller, presented over another screen.
class LoginTest : public testing::Test {
protected:
    LoginTest() {
        window_->setRootViewController(root_);
        login_ =
            make<LoginViewController>(service_, [this](bool succeeded, const auto& user, const std::string& message) {
                ends_.push_back((succeeded ? "in " : "out ") + (user ? user->name : "nobody") + ": " + message);
            });
        root_->presentViewController(make<UINavigationController>(login_), true);
        platform_.advance(1);
        view_ = std::dynamic_pointer_cast<LoginView>(login_->view());
    }
    ~LoginTest() override {
        window_->setRootViewController(nullptr);
        platform_.advance(1);
    }

    void type(const std::shared_ptr<UITextField>& field, const std::string& text) {
        window_->textInputChanged(field->tag(), text);
        platform_.advance(0.1);
    }
    void choose(LoginView::Mode mode) {
        const CGRect segments = view_->modeControl()->convertRectToView(view_->modeControl()->bounds(), nullptr);
        platform_.tap(
            {segments.midX() + (mode == LoginView::Mode::signIn ? -1 : 1) * segments.width() / 4, segments.midY()});
    }
    void fill(const std::string& name, const std::string& password) {
        type(view_->nameField(), name);
        type(view_->passwordField(), password);
    }
    void succeed() {
        service_->answer(std::make_shared<const OstrelServerUserObject>(OstrelServerUserObject{7, "Ada"}),
                         std::nullopt);
        platform_.advance(1);
    }
    std::string error() const { return view_->errorLabel()->isHidden() ? "" : view_->errorLabel()->text(); }
    bool isShown() const { return root_->presentedViewController() != nullptr; }

    HeadlessPlatform platform_;
    std::shared_ptr<UIWindow> window_ = platform_.makeWindow({375, 667});
    std::shared_ptr<UIViewController> root_ = make<UIViewController>();
    std::shared_ptr<ScriptedSignIn> service_ = std::make_shared<ScriptedSignIn>();
    std::vector<std::string> ends_;
    std::shared_ptr<LoginViewController> login_;
    std::shared_ptr<LoginView> view_;
};

TEST_F(LoginTest, theReturnKeyLeadsFromTheNameToTheAnswer) {
    EXPECT_TRUE(view_->nameField()->isFirstResponder());
    EXPECT_TRUE(platform_.type("  Ada "));
    EXPECT_TRUE(platform_.pressReturn());
    EXPECT_TRUE(view_->passwordField()->isFirstResponder());
    EXPECT_TRUE(platform_.type(" pass word "));
    EXPECT_TRUE(platform_.pressReturn());
    EXPECT_EQ(service_->calls, std::vector<std::string>{"in Ada/ pass word "});
    EXPECT_TRUE(view_->isBusy());
    EXPECT_FALSE(view_->button()->isEnabled());
    EXPECT_TRUE(platform_.sees("Signing In…"));
    platform_.pressReturn();
    platform_.tap(*view_->button());
    EXPECT_EQ(service_->calls.size(), 1u) << "one at a time";

    succeed();
    EXPECT_EQ(ends_, std::vector<std::string>{"in Ada: Signed in as Ada."});
    EXPECT_TRUE(isShown()) << "the caller dismisses it";
}

TEST_F(LoginTest, whatIsWrongIsToldBeforeTheServerIsAsked) {
    using Mode = LoginView::Mode;
    const std::string tooShort = "The password needs at least 8 characters.";
    const struct {
        Mode mode;
        const char* name;
        const char* password;
        std::string error;
        bool nameIsWrong = false;
    } cases[] = {
        {Mode::signIn, "", "", "Enter your name.", true},  {Mode::signIn, "   ", "password", "Enter your name.", true},
        {Mode::signIn, "Ada", "", "Enter your password."}, {Mode::createAccount, "Ada", "", "Enter your password."},
        {Mode::createAccount, "Ada", "1234567", tooShort}, {Mode::createAccount, "Ada", "ééééééé", tooShort},
    };
    for (const auto& one : cases) {
        choose(one.mode);
        fill(one.name, one.password);
        platform_.tap(*view_->button());
        EXPECT_EQ(error(), one.error);
        EXPECT_TRUE(platform_.sees(one.error));
        EXPECT_EQ(view_->nameField()->isFirstResponder(), one.nameIsWrong) << one.error;
        EXPECT_EQ(view_->passwordField()->isFirstResponder(), !one.nameIsWrong) << one.error;
    }
    EXPECT_TRUE(service_->calls.empty());
    choose(LoginView::Mode::signIn);
    fill("Ada", "1234567");
    login_->submit();
    EXPECT_EQ(service_->calls.size(), 1u) << "an old account may have a shorter password";
}

TEST_F(LoginTest, aFailureIsShownAndLosesNothing) {
    fill("Ada", "wrongword");
    login_->submit();
    service_->answer(nullptr, "The name or the password is wrong.");
    platform_.advance(0.1);
    EXPECT_EQ(error(), "The name or the password is wrong.");
    EXPECT_FALSE(view_->isBusy());
    EXPECT_TRUE(view_->button()->isEnabled());
    EXPECT_EQ(view_->nameField()->text(), "Ada");
    EXPECT_EQ(view_->passwordField()->text(), "wrongword");
    EXPECT_TRUE(view_->passwordField()->isFirstResponder());
    EXPECT_GE(view_->button()->frame().minY(), view_->errorLabel()->frame().maxY());
    type(view_->passwordField(), "password");
    EXPECT_EQ(error(), "");
    EXPECT_TRUE(ends_.empty());
    service_.reset();
    login_->submit();
    EXPECT_EQ(error(), "The server cannot be reached.");
}

TEST_F(LoginTest, cancelAndEscapeCloseItOnce) {
    ASSERT_TRUE(login_->navigationItem().leftBarButtonItem());
    EXPECT_TRUE(platform_.key(UIKeyCode::escape));
    login_->navigationItem().leftBarButtonItem()->press();
    platform_.advance(1);
    EXPECT_EQ(ends_, std::vector<std::string>{"out nobody: cancelled"});
    EXPECT_FALSE(isShown());
    EXPECT_TRUE(service_->calls.empty());
}

TEST_F(LoginTest, closingItWhileAnAccountIsCreatedAbandonsTheRequest) {
    fill("Ada", "password");
    choose(LoginView::Mode::createAccount);
    EXPECT_EQ(login_->title() + "/" + view_->button()->currentTitle(), "Create Account/Create Account");
    login_->submit();
    EXPECT_FALSE(view_->modeControl()->isEnabled());
    login_->navigationItem().leftBarButtonItem()->press();
    platform_.advance(1);
    EXPECT_EQ(service_->calls, (std::vector<std::string>{"up Ada/password", "abandon"}));
    succeed();
    EXPECT_EQ(ends_, std::vector<std::string>{"out nobody: cancelled"});
}

TEST_F(LoginTest, tabGoesDownTheScreen) {
    for (const UIView* next :
         {static_cast<UIView*>(view_->passwordField().get()), static_cast<UIView*>(view_->button().get())}) {
        platform_.key(UIKeyCode::tab);
        EXPECT_EQ(window_->focusedView(), next);
    }
}

TEST(LoginLayout, isOneColumnWithoutOverlapsAtEverySize) {
    for (const CGSize size :
         {CGSize{320, 480}, CGSize{375, 667}, CGSize{768, 1024}, CGSize{1600, 900}, CGSize{60, 100}}) {
        for (const bool shows : {false, true}) {
            LoginLayout::Texts texts{34, 20, std::nullopt, std::nullopt, 80};
            if (shows) texts.hint = 18, texts.error = 40;
            const LoginLayout layout = LoginLayout::make(size, texts);
            const CGRect frames[] = {layout.heading, layout.subtitle, layout.mode,  layout.card,
                                     layout.hint,    layout.error,    layout.button};
            CGFloat y = 20;
            for (const CGRect& frame : frames) {
                EXPECT_GE(frame.minY(), y);
                EXPECT_LE(frame.width(), LoginLayout::maximumWidth);
                EXPECT_NEAR(frame.midX(), size.width / 2, 1);
                EXPECT_GE(frame.minX(), 0);
                y = frame.maxY();
            }
            EXPECT_GT(layout.contentHeight, y);
            for (const CGRect& frame :
                 {layout.nameTitle, layout.nameField, layout.separator, layout.passwordTitle, layout.passwordField}) {
                EXPECT_LE(frame.maxX(), layout.card.width());
                EXPECT_LE(frame.maxY(), layout.card.height());
            }
            EXPECT_LE(layout.nameTitle.maxX(), layout.nameField.minX());
            EXPECT_LE(layout.nameField.maxY(), layout.separator.minY());
            EXPECT_LE(layout.separator.maxY(), layout.passwordField.minY());
        }
    }
}

}  // namespace
}  // namespace ostrel
