#pragma once

#include "article/server/OstrelServerUserObject.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// Gets the user who signed in, or null and an English sentence for the application's user. When a session is restored
/// and nobody was signed in, both are absent.
using SignInHandler =
    std::function<void(std::shared_ptr<const OstrelServerUserObject> user, const std::optional<std::string>& error)>;

/// Signs users in and up, for login screens. Handlers are called once, on the main thread, after the call has returned.
class SignInService {
public:
    virtual ~SignInService() = default;
    // The server's rules for a new account, in characters: a screen can report a mistake without asking the server.
    static constexpr std::size_t shortestPassword = 8;
    static constexpr std::size_t longestPassword = 256;
    static constexpr std::size_t longestName = 40;

    virtual void signIn(const std::string& name, const std::string& password, SignInHandler handler) = 0;
    virtual void signUp(const std::string& name, const std::string& password, SignInHandler handler) = 0;
    /// Abandons the sign-ins that have not been answered: whatever the server answers, they sign nobody in, and their
    /// handlers get the error "cancelled".
    virtual void abandon() = 0;
};

}  // namespace ostrel
