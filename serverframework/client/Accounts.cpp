#include "serverframework/client/Accounts.h"

#include "platform/foundation/runloop/RunLoop.h"

#include <utility>

namespace ostrel {

namespace {

/// The member "user" of an answer, {"id": 1, "name": "Ada"}; null when there is none.
std::shared_ptr<const OstrelServerUserObject> userOf(const JudgedAnswer& answer) {
    if (answer.error || !answer.result || !answer.result->success()) return nullptr;
    const Dictionary user(answer.result->document()["user"]);
    if (!user || !user["id"].isNumber() || user["id"].integer() <= 0) return nullptr;
    return std::make_shared<const OstrelServerUserObject>(
        OstrelServerUserObject{user["id"].integer(), std::string(user["name"].string())});
}

std::string errorOf(const JudgedAnswer& answer) {
    if (answer.error) return *answer.error;
    if (answer.result && answer.result->errString()) return *answer.result->errString();
    return "The answer cannot be read: it names no user.";
}

}  // namespace

Accounts::Accounts(std::shared_ptr<HttpServerConnection> server, std::shared_ptr<Session> session)
    : server_(std::move(server)), session_(std::move(session)) {}

void Accounts::signIn(const std::string& name, const std::string& password, SignInHandler handler) {
    enter("account/sign_in", name, password, std::move(handler));
}

void Accounts::signUp(const std::string& name, const std::string& password, SignInHandler handler) {
    enter("account/sign_up", name, password, std::move(handler));
}

void Accounts::enter(const std::string& path, const std::string& name, const std::string& password,
                     SignInHandler handler) {
    HttpServerConnection::Sending sending;
    sending.path = path;
    sending.form = FormFields{{"name", name}, {"password", password}};
    // The server also answers 401 to a wrong password, which does not end the session.
    sending.onUnauthorized = HttpServerConnection::OnUnauthorized::keepSession;
    // The sign-in has a jar of its own, because only a successful one may change the session's cookies.
    const auto jar = session_->jar()->without(Session::cookieName);
    sending.jar = jar;
    server_->send(std::move(sending),
                  [self = weak_from_this(), generation = session_->generation(), attempt = attempts_, jar,
                   handler = std::move(handler)](const JudgedAnswer& answer) {
                      const auto user = userOf(answer);
                      const auto accounts = self.lock();
                      const bool isLate =
                          !accounts || accounts->session_->generation() != generation || accounts->attempts_ != attempt;
                      if (isLate) {
                          // A later sign-in or sign-out counts, or the caller abandoned this one.
                          if (handler) handler(nullptr, std::string(cancelledText));
                          return;
                      }
                      if (user) accounts->session_->begin(user, jar);
                      if (handler) handler(user, user ? std::nullopt : std::optional(errorOf(answer)));
                  });
}

void Accounts::signOut() {
    if (session_->jar()->has(Session::cookieName)) {
        HttpServerConnection::Sending sending;
        sending.path = "account/sign_out";
        sending.form = FormFields{};
        sending.onUnauthorized = HttpServerConnection::OnUnauthorized::keepSession;
        server_->send(std::move(sending), nullptr);
    }
    session_->end();
}

void Accounts::restore(SignInHandler handler) {
    const std::uint64_t generation = session_->generation();
    session_->restoreCookies([self = weak_from_this(), generation, handler = std::move(handler)] {
        const auto accounts = self.lock();
        if (!accounts || !accounts->session_->jar()->has(Session::cookieName)) {
            if (handler) RunLoop::main().perform([handler] { handler(nullptr, std::nullopt); });
            return;
        }
        HttpServerConnection::Sending sending;
        sending.path = "account/me";
        accounts->server_->send(std::move(sending), [self, generation, handler](const JudgedAnswer& answer) {
            const auto user = userOf(answer);
            const auto current = self.lock();
            if (!current || current->session_->generation() != generation) {
                if (handler) handler(nullptr, std::string(cancelledText));
                return;
            }
            if (user) {
                current->session_->begin(user, current->session_->jar());
            } else if (answer.status == 401 || (!answer.error && answer.result && answer.result->success())) {
                // The server no longer knows the session. (When the server cannot be reached, the cookies stay for the
                // next start.)
                current->session_->end();
            }
            const bool failed = answer.error || (answer.result && answer.result->errString());
            if (handler) handler(user, failed && !user ? std::optional(errorOf(answer)) : std::nullopt);
        });
    });
}

}  // namespace ostrel
