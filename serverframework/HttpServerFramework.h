#pragma once

#include "article/server/OstrelServerFramework.h"
#include "serverframework/account/SessionStore.h"
#include "serverframework/account/SignInService.h"
#include "serverframework/account/UserNotification.h"
#include "serverframework/http/ClientLimits.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The server framework over HTTP: the public face of this library. A host makes one, installs it with
/// `OstrelServerFramework::install`, and destroys it when the process ends. Main thread, except for the operations of
/// the boundary, which any thread may call.
///
/// Paths are joined to the base address. Only the base address's origin ever gets the session's cookies; redirects are
/// followed within one origin. The destructor cancels the requests that have not been answered: their handlers get the
/// error "cancelled" in a later turn of the main run loop.
class HttpServerFramework final : public OstrelServerFramework {
public:
    using Limits = ClientLimits;
    struct Options {
        /// An http or https address, perhaps with a path prefix; a slash at its end makes no difference.
        std::string baseAddress;
        std::string userAgent = "OstrelServer/1.0";
        /// Keeps the session between starts; null: the session ends with the process.
        std::shared_ptr<SessionStore> sessionStore;
        /// The folder that keeps media between starts; processes may share it. Absent: "ostrel/media" in the user's
        /// cache folder ($XDG_CACHE_HOME, else ~/.cache). Empty: none, and media above
        /// `MediaLimits::bodyWithoutFileBytes` fail.
        std::optional<std::string> mediaCacheFolder;
        Limits limits{};
    };

    /// Null, with a sentence in `error`, when the base address is not valid.
    static std::shared_ptr<HttpServerFramework> create(Options options, std::string* error = nullptr);
    ~HttpServerFramework() override;

    // Accounts. Handlers are called once, on the main thread, after the call has returned. Every change of the
    // signed-in user posts the notification "Current_User_Changed_Notification_Name"; a 401 answer to a request of the
    // session is one.
    void signIn(const std::string& name, const std::string& password, SignInHandler handler);
    void signUp(const std::string& name, const std::string& password, SignInHandler handler);
    /// Signs in and up as well, for login screens that a host makes itself.
    SignInService& signInService();
    /// Signs out at once and also tells the server, whatever it answers.
    void signOut();
    /// Loads the session from the store and asks the server for its user. Call it once, at start.
    void restoreSession(SignInHandler handler);

    /// Loads the messages that others sent to the signed-in user, newest first: the newest page, or the page that
    /// `next` of another page names.
    void loadNotifications(const std::optional<std::string>& next, NotificationsHandler handler);
    /// Marks the user's messages up to and including this id as read.
    void markNotificationsRead(std::int64_t upTo, UnreadHandler handler);

    OstrelServer& shareServer() override;
    OstrelRequestManager& requestManager() override;
    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string& html) override;
    std::shared_ptr<UIViewController> loginController(LoginHandler handler) override;
    std::optional<NSDate> dateFromServerText(std::string_view text) override;
    std::string encodeForQuery(std::string_view text) override;

    struct Parts;
    explicit HttpServerFramework(std::unique_ptr<Parts> parts);

private:
    std::unique_ptr<Parts> parts_;
};

}  // namespace ostrel
