#pragma once

#include "article/server/OstrelServerUserObject.h"
#include "serverframework/account/SessionStore.h"
#include "serverframework/http/CookieJar.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>

namespace ostrel {

/// The signed-in user, and the cookies that prove it to the server. Every change of the user posts
/// "Current_User_Changed_Notification_Name" on the main thread.
class Session final : public std::enable_shared_from_this<Session> {
public:
    /// The cookie that carries the session. Signing out removes this cookie and keeps the others.
    static constexpr std::string_view cookieName = "ostrel_session";

    Session(std::string origin, std::shared_ptr<SessionStore> store);

    /// Any thread.
    std::shared_ptr<const OstrelServerUserObject> currentUser() const;
    std::shared_ptr<CookieJar> jar() const;
    /// The number of sign-ins and sign-outs so far. An answer to a request of an earlier generation must not change the
    /// session.
    std::uint64_t generation() const;

    /// Main thread. Replaces the former session; `jar` holds the cookies that came with the user.
    void begin(std::shared_ptr<const OstrelServerUserObject> user, std::shared_ptr<CookieJar> jar);
    /// Main thread. Signs the user out and removes the session's cookie from the jar and the store.
    void end();
    /// Main thread. Saves the cookies in the store when they have changed or when the saved ones are an hour old: the
    /// server postpones their expiry with each use.
    void keepCookies();
    /// Main thread. Fills the jar from the store, then calls `done`. Until then nothing is saved, because saving would
    /// replace the cookies that have not been loaded yet.
    void restoreCookies(std::function<void()> done);

private:
    void change(std::shared_ptr<const OstrelServerUserObject> user, std::shared_ptr<CookieJar> jar);

    const std::shared_ptr<SessionStore> store_;
    /// Guards the three members that follow.
    mutable std::mutex mutex_;
    std::shared_ptr<const OstrelServerUserObject> user_;
    std::shared_ptr<CookieJar> jar_;
    std::uint64_t generation_ = 0;
    // Main thread: the cookies in the store, without their times, and when they were saved.
    std::string keptCookies_;
    double keptAt_ = 0;
    bool isRestoring_ = false;
};

}  // namespace ostrel
