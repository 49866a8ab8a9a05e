#pragma once

#include "article/server/OstrelLoginViewController.h"
#include "platform/uikit/screens/UIViewController.h"
#include "serverframework/account/SignInService.h"
#include "serverframework/login/LoginView.h"

#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The login screen, which signs in or creates an account. It calls its handler once: with the user after a success,
/// when the caller dismisses the screen, or with "cancelled" when the user closed the screen, which dismisses itself.
/// The screen shows a failure and keeps the typed texts. Main thread.
class LoginViewController final : public UIViewController {
public:
    /// The screen does not keep the service alive; when it has gone, the screen says that the server cannot be reached.
    LoginViewController(std::weak_ptr<SignInService> service, LoginHandler handler);

    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    /// The Escape key does the same as "Cancel".
    bool cancelOperation() override;

    /// Called by the button and by the Return key of the password field.
    void submit();
    /// Closes the screen without a login.
    void cancel();

private:
    void setMode(LoginView::Mode mode);
    /// A sentence on what is wrong with the input, and moves the focus there; absent when the input can be sent.
    std::optional<std::string> complaint();
    void answered(const std::shared_ptr<const OstrelServerUserObject>& user, const std::optional<std::string>& error);
    void finish(bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user, const std::string& message);

    const std::weak_ptr<SignInService> service_;
    LoginHandler handler_;
    std::shared_ptr<LoginView> loginView_;
};

}  // namespace ostrel
