#pragma once

#include "serverframework/account/SignInService.h"
#include "serverframework/client/HttpServer.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ostrel {

/// The account requests and what they do to the session. Main thread.
class Accounts final : public SignInService, public std::enable_shared_from_this<Accounts> {
public:
    Accounts(std::shared_ptr<HttpServer> server, std::shared_ptr<Session> session);

    void signIn(const std::string& name, const std::string& password, SignInHandler handler) override;
    void signUp(const std::string& name, const std::string& password, SignInHandler handler) override;
    void abandon() override { ++attempts_; }
    /// Forgets the session at once and tells the server, whatever it answers.
    void signOut();
    /// Takes the kept session and asks the server whose it is.
    void restore(SignInHandler handler);

private:
    void enter(const std::string& path, const std::string& name, const std::string& password,
               SignInHandler handler);

    const std::shared_ptr<HttpServer> server_;
    const std::shared_ptr<Session> session_;
    /// Sign-ins that began at another count have been abandoned.
    std::uint64_t attempts_ = 0;
};

}  // namespace ostrel
