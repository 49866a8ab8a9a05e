#pragma once

#include "article/server/OstrelServerFramework.h"
#include "serverframework/account/SessionStore.h"
#include "serverframework/account/SignInService.h"
#include "serverframework/account/UserNotification.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The server framework of the application, over HTTP: the public face of this library. A host makes one, installs it
/// with `OstrelServerFramework::install`, and lets it go when the process ends. Made, used for signing in and destroyed
/// on the main thread; the operations of the boundary accept calls from any thread.
///
/// Paths are joined to the base address. Only its origin ever gets the session's cookies; redirects are followed within
/// one origin. Destroying the framework cancels what is under way: those handlers are called with the error "cancelled"
/// in a later turn of the main run loop.
class HttpServerFramework final : public OstrelServerFramework {
public:
    struct Limits {
        /// An answer text longer than this is an error.
        std::size_t maximumAnswerBytes = std::size_t{32} * 1024 * 1024;
        /// Media above 256 KiB are gathered in a file, so that even the largest cost no memory.
        std::size_t maximumMediumBytes = std::size_t{1024} * 1024 * 1024;
        /// What the media fetcher keeps in memory; a medium larger than a quarter of it is not kept there.
        std::size_t mediaCacheBytes = std::size_t{32} * 1024 * 1024;
        /// What it keeps on the disk, in all processes that share the folder together; a medium larger than half of it
        /// is not kept.
        std::size_t mediaDiskBytes = std::size_t{1024} * 1024 * 1024;
        double connectTimeoutSeconds = 10;
        /// A transfer that moves nothing for so long is given up; a transfer as a whole may take any time.
        int stallTimeoutSeconds = 30;
        /// Uploads at a time, those included whose pictures are being encoded; others wait.
        int simultaneousUploads = 6;
        /// Two more than media and uploads can take, so that the other requests never wait for them.
        int connectionsPerHost = 14;
    };
    struct Options {
        /// http or https, with a path prefix if need be; a slash at the end makes no difference.
        std::string baseAddress;
        std::string userAgent = "OstrelServer/1.0";
        /// Where the session is kept between starts; null: in memory only.
        std::shared_ptr<SessionStore> sessionStore;
        /// Where media are kept between starts; may be shared by processes. Absent: "ostrel/media" in the user's cache
        /// folder ($XDG_CACHE_HOME, else ~/.cache). Empty: nowhere; media above 64 MiB then fail.
        std::optional<std::string> mediaCacheFolder;
        Limits limits{};
    };

    /// Null, and a sentence in `error`, when the base address is none.
    static std::shared_ptr<HttpServerFramework> create(Options options, std::string* error = nullptr);
    ~HttpServerFramework() override;

    /// Accounts. The handlers are called once, on the main thread, after the call returned. Whenever the signed-in user
    /// changes, also because the server answers 401 to a request of the session, the notification
    /// "Current_User_Changed_Notification_Name" is posted.
    void signIn(const std::string& name, const std::string& password, SignInHandler handler);
    void signUp(const std::string& name, const std::string& password, SignInHandler handler);
    /// The same two, for screens of the host's own.
    SignInService& signInService();
    /// Takes effect at once; the server is told in passing.
    void signOut();
    /// Takes the session from the store and asks the server whose it is. Once, at start.
    void restoreSession(SignInHandler handler);

    /// What others sent to the signed-in user, newest first: the newest page, or the one that `next` of a page names.
    void loadNotifications(const std::optional<std::string>& next, NotificationsHandler handler);
    /// Marks the user's notifications up to and including this id as read.
    void markNotificationsRead(std::int64_t upTo, UnreadHandler handler);

    OstrelServer& shareServer() override;
    OstrelRequestManager& requestManager() override;
    /// The result of an answer was parsed before its handler was called; within the handler this only hands it out.
    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string& html) override;
    std::shared_ptr<UIViewController> loginController(LoginHandler handler) override;
    std::optional<NSDate> dateFromServerText(std::string_view text) override;
    std::string encodeForQuery(std::string_view text) override;

    struct Statistics {
        std::uint64_t answersParsedAhead = 0;
        std::uint64_t answersParsedOnTheSpot = 0;
    };
    Statistics statistics() const;

    struct Parts;
    explicit HttpServerFramework(std::unique_ptr<Parts> parts);

private:
    std::unique_ptr<Parts> parts_;
};

}  // namespace ostrel
