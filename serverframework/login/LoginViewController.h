#pragma once

#include "article/server/OstrelLoginViewController.h"
#include "platform/uikit/screens/UIViewController.h"
#include "serverframework/account/SignInService.h"
#include "serverframework/login/LoginView.h"

#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The login screen: signs in or creates an account. Its handler is called once: with the user when that went well (the
/// caller then dismisses the screen), or with "cancelled" when the user closed it, which dismisses it. A failure is told
/// on the screen, which keeps what was typed. Main thread.
class LoginViewController final : public UIViewController {
public:
    /// The service is not kept alive; without it the screen says that it cannot be reached.
    LoginViewController(std::weak_ptr<SignInService> service, LoginHandler handler);

    void loadView() override;
    void viewDidLoad() override;
    void viewDidAppear(bool animated) override;
    /// Escape: as Cancel.
    bool cancelOperation() override;

    /// The Return key of the password, and the button.
    void submit();
    /// Closes the screen without a login.
    void cancel();

private:
    void setMode(LoginView::Mode mode);
    /// What is wrong with the input, told before the server is asked; puts the focus there. None: it can be sent.
    std::optional<std::string> complaint();
    void answered(const std::shared_ptr<const OstrelServerUserObject>& user,
                  const std::optional<std::string>& error);
    void finish(bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user,
                const std::string& message);

    const std::weak_ptr<SignInService> service_;
    LoginHandler handler_;
    std::shared_ptr<LoginView> loginView_;
};

}  // namespace ostrel
