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

/// Who is signed in, and the cookies that prove it. Every change of the user posts
/// "Current_User_Changed_Notification_Name" on the main thread.
class Session final : public std::enable_shared_from_this<Session> {
public:
    /// The cookie that carries the session; signing out drops it and keeps the others.
    static constexpr std::string_view cookieName = "ostrel_session";

    Session(std::string origin, std::shared_ptr<SessionStore> store);

    /// Any thread.
    std::shared_ptr<const OstrelServerUserObject> currentUser() const;
    std::shared_ptr<CookieJar> jar() const;
    /// Counts the changes of who is signed in. What belongs to an older count must not touch the session any more.
    std::uint64_t generation() const;

    /// Main thread. Ends what was before; `jar` holds the cookies that came with the user.
    void begin(std::shared_ptr<const OstrelServerUserObject> user, std::shared_ptr<CookieJar> jar);
    /// Main thread. Nobody is signed in any more; the cookie of the session is forgotten here and in the store.
    void end();
    /// Main thread. Gives the cookies to the store when they changed, or when the kept ones are an hour old: the server
    /// puts off their expiry with each use.
    void keepCookies();
    /// Main thread. Fills the jar from the store, then calls `done`. Until then nothing is given to the store, which would
    /// lose what it keeps.
    void restoreCookies(std::function<void()> done);

private:
    void change(std::shared_ptr<const OstrelServerUserObject> user, std::shared_ptr<CookieJar> jar);

    const std::shared_ptr<SessionStore> store_;
    mutable std::mutex mutex_;
    std::shared_ptr<const OstrelServerUserObject> user_;  // guarded by mutex_
    std::shared_ptr<CookieJar> jar_;                      // guarded by mutex_
    std::uint64_t generation_ = 0;                        // guarded by mutex_
    /// Main thread.
    std::string keptCookies_;
    double keptAt_ = 0;
    bool isRestoring_ = false;
};

}  // namespace ostrel
