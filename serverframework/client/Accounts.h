#pragma once

#include "serverframework/account/SignInService.h"
#include "serverframework/client/HttpServerConnection.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ostrel {

/// Makes the requests about accounts and changes the session by their answers. Main thread.
class Accounts final : public SignInService, public std::enable_shared_from_this<Accounts> {
public:
    Accounts(std::shared_ptr<HttpServerConnection> server, std::shared_ptr<Session> session);

    void signIn(const std::string& name, const std::string& password, SignInHandler handler) override;
    void signUp(const std::string& name, const std::string& password, SignInHandler handler) override;
    void abandon() override { ++attempts_; }
    /// Ends the session at once and tells the server, whatever it answers.
    void signOut();
    /// Loads the kept session and asks the server for its user.
    void restore(SignInHandler handler);

private:
    void enter(const std::string& path, const std::string& name, const std::string& password, SignInHandler handler);

    const std::shared_ptr<HttpServerConnection> server_;
    const std::shared_ptr<Session> session_;
    /// The number of calls of `abandon`. A sign-in that began at another number was abandoned.
    std::uint64_t attempts_ = 0;
};

}  // namespace ostrel
