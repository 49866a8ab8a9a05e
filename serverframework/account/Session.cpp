#include "serverframework/account/Session.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"

#include <utility>

namespace ostrel {

Session::Session(std::string origin, std::shared_ptr<SessionStore> store)
    : store_(std::move(store)), jar_(std::make_shared<CookieJar>(std::move(origin))) {}

std::shared_ptr<const OstrelServerUserObject> Session::currentUser() const {
    const std::lock_guard lock(mutex_);
    return user_;
}

std::shared_ptr<CookieJar> Session::jar() const {
    const std::lock_guard lock(mutex_);
    return jar_;
}

std::uint64_t Session::generation() const {
    const std::lock_guard lock(mutex_);
    return generation_;
}

void Session::change(std::shared_ptr<const OstrelServerUserObject> user, std::shared_ptr<CookieJar> jar) {
    bool changed = false;
    {
        const std::lock_guard lock(mutex_);
        changed = (user_ == nullptr) != (user == nullptr) || (user && user->id != user_->id);
        user_ = std::move(user);
        jar_ = std::move(jar);
        ++generation_;
    }
    keepCookies();
    if (changed) NSNotificationCenter::defaultCenter().postNotification("Current_User_Changed_Notification_Name");
}

void Session::begin(std::shared_ptr<const OstrelServerUserObject> user, std::shared_ptr<CookieJar> jar) {
    change(std::move(user), std::move(jar));
}

void Session::end() { change(nullptr, jar()->without(cookieName)); }

void Session::keepCookies() {
    if (isRestoring_) return;
    constexpr double hour = 3600;
    const std::string text = jar()->text();
    const std::string content = withoutExpiry(text);
    const double now = Clock::shared().monotonicSeconds();
    if (content == keptCookies_ && (text.empty() || now - keptAt_ < hour)) return;
    keptCookies_ = content;
    keptAt_ = now;
    if (text.empty()) {
        store_->clear();
    } else {
        store_->save(text);
    }
}

void Session::restoreCookies(std::function<void()> done) {
    isRestoring_ = true;
    store_->load([session = weak_from_this(), before = generation(), done = std::move(done)](const std::string& text) {
        if (const auto self = session.lock()) {
            self->isRestoring_ = false;
            if (self->generation() == before) {
                self->jar()->add(text);
                self->keptCookies_ = withoutExpiry(text);
                self->keptAt_ = Clock::shared().monotonicSeconds();
            } else {
                // A user signed in or out while the store was loading; the store's cookies are out of date.
                self->keepCookies();
            }
        }
        done();
    });
}

}  // namespace ostrel
