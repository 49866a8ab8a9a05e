#pragma once

#include "article/server/OstrelServerUserObject.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The user, or null and an English sentence for the user of the application. Both absent: nobody is signed in, and
/// nothing went wrong (only when a session is restored).
using SignInHandler = std::function<void(std::shared_ptr<const OstrelServerUserObject> user,
                                         const std::optional<std::string>& error)>;

/// Signs users in and up: what the login screen needs. Handlers are called once, on the main thread, never before the
/// call returned.
class SignInService {
public:
    virtual ~SignInService() = default;
    /// The rules of the server for a new account, so that a screen can say what is wrong without asking it.
    static constexpr std::size_t shortestPassword = 8;
    static constexpr std::size_t longestPassword = 256;
    static constexpr std::size_t longestName = 40;

    virtual void signIn(const std::string& name, const std::string& password, SignInHandler handler) = 0;
    virtual void signUp(const std::string& name, const std::string& password, SignInHandler handler) = 0;
    /// Nobody waits for the sign-ins under way any more: whatever the server answers, they sign nobody in, and their
    /// handlers are called with the error "cancelled".
    virtual void abandon() = 0;
};

}  // namespace ostrel
