#include "serverframework/login/LoginViewController.h"

#include "platform/foundation/values/Object.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

std::string trimmedEntry(const std::string& text) {
    const auto begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) return {};
    return text.substr(begin, text.find_last_not_of(" \t\r\n") - begin + 1);
}

/// The number of characters in valid UTF-8: the bytes that are no continuation bytes.
std::size_t characterCount(const std::string& text) {
    return static_cast<std::size_t>(
        std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

}  // namespace

LoginViewController::LoginViewController(std::weak_ptr<SignInService> service, LoginHandler handler)
    : service_(std::move(service)), handler_(std::move(handler)) {}

void LoginViewController::loadView() {
    loginView_ = make<LoginView>();
    setView(loginView_);
}

void LoginViewController::viewDidLoad() {
    const auto self = std::weak_ptr(std::static_pointer_cast<LoginViewController>(shared_from_this()));
    const auto act = [self](void (LoginViewController::*action)()) {
        return [self, action] {
            if (const auto screen = self.lock()) (screen.get()->*action)();
        };
    };
    navigationItem().setLeftBarButtonItem(
        std::make_shared<UIBarButtonItem>(UIBarButtonItem::SystemItem::cancel, act(&LoginViewController::cancel)));

    loginView_->modeControl()->addTarget(
        [self] {
            const auto screen = self.lock();
            if (!screen) return;
            const bool creates = screen->loginView_->modeControl()->selectedSegmentIndex() == 1;
            screen->setMode(creates ? LoginView::Mode::createAccount : LoginView::Mode::signIn);
        },
        UIControlEvent::valueChanged);
    const auto forgetError = [self] {
        if (const auto screen = self.lock()) screen->loginView_->setError({});
    };
    loginView_->nameField()->addTarget(forgetError, UIControlEvent::editingChanged);
    loginView_->passwordField()->addTarget(forgetError, UIControlEvent::editingChanged);
    loginView_->nameField()->addTarget(
        [self] {
            if (const auto screen = self.lock()) screen->loginView_->passwordField()->becomeFirstResponder();
        },
        UIControlEvent::editingDidEndOnExit);
    loginView_->passwordField()->addTarget(act(&LoginViewController::submit), UIControlEvent::editingDidEndOnExit);
    loginView_->button()->addTarget(act(&LoginViewController::submit), UIControlEvent::touchUpInside);
    setMode(LoginView::Mode::signIn);
}

void LoginViewController::viewDidAppear(bool) {
    const auto& name = loginView_->nameField();
    (name->text().empty() ? name : loginView_->passwordField())->becomeFirstResponder();
}

void LoginViewController::setMode(LoginView::Mode mode) {
    loginView_->setMode(mode);
    loginView_->setError({});
    setTitle(mode == LoginView::Mode::signIn ? "Sign In" : "Create Account");
}

std::optional<std::string> LoginViewController::complaint() {
    if (trimmedEntry(loginView_->nameField()->text()).empty()) {
        loginView_->nameField()->becomeFirstResponder();
        return "Enter your name.";
    }
    const std::string& password = loginView_->passwordField()->text();
    const bool tooShort = loginView_->mode() == LoginView::Mode::createAccount &&
                          characterCount(password) < SignInService::shortestPassword;
    if (!password.empty() && !tooShort) return std::nullopt;
    loginView_->passwordField()->becomeFirstResponder();
    if (password.empty()) return "Enter your password.";
    return "The password needs at least " + std::to_string(SignInService::shortestPassword) + " characters.";
}

void LoginViewController::submit() {
    if (loginView_->isBusy() || !handler_) return;
    const auto error = complaint();
    loginView_->setError(error.value_or(""));
    if (error) return;
    const auto service = service_.lock();
    if (!service) {
        loginView_->setError("The server cannot be reached.");
        return;
    }
    loginView_->setBusy(true);
    const auto answer = [self = weak_from_this()](const auto& user, const auto& failure) {
        if (const auto screen = self.lock()) static_cast<LoginViewController&>(*screen).answered(user, failure);
    };
    const std::string name = trimmedEntry(loginView_->nameField()->text());
    const std::string& password = loginView_->passwordField()->text();
    if (loginView_->mode() == LoginView::Mode::signIn) {
        service->signIn(name, password, answer);
    } else {
        service->signUp(name, password, answer);
    }
}

void LoginViewController::answered(const std::shared_ptr<const OstrelServerUserObject>& user,
                                   const std::optional<std::string>& error) {
    if (!handler_) return;
    loginView_->setBusy(false);
    if (user) {
        finish(true, user, "Signed in as " + user->name + ".");
        return;
    }
    loginView_->setError(error.value_or("The server cannot be reached."));
    loginView_->passwordField()->becomeFirstResponder();
}

void LoginViewController::cancel() {
    if (loginView_->isBusy()) {
        if (const auto service = service_.lock()) service->abandon();
    }
    dismissViewControllerAnimated(true);
    finish(false, nullptr, "cancelled");
}

bool LoginViewController::cancelOperation() {
    cancel();
    return true;
}

void LoginViewController::finish(bool succeeded, const std::shared_ptr<const OstrelServerUserObject>& user,
                                 const std::string& message) {
    const LoginHandler handler = std::exchange(handler_, nullptr);
    if (handler) handler(succeeded, user, message);
}

}  // namespace ostrel
