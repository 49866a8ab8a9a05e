#pragma once

#include "articleserver/http/HttpServer.h"
#include "articleserver/media/AvatarPainter.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/routes/AttemptLimiter.h"
#include "articleserver/routes/MediaDoor.h"
#include "articleserver/routes/PasswordHasher.h"
#include "articleserver/store/ArticleStore.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace articleserver {

/// The routes of the article server: who may do what, and how it is answered. docs/protocol.md describes
/// them. Called from any thread of the HTTP server at once; it keeps no state but limiters and caches.
class ArticleService final : public WebService {
public:
    /// `publicUrl` is the scheme and host to put in front of "/article/ID" and "/media/NAME", without a
    /// slash at its end; when empty, the Host header of each request is used.
    ArticleService(ArticleStore& store, MediaFolder& media, std::string publicUrl,
                   std::function<ServerTime()> now);

    /// The address to fall back on when a request names no valid host.
    void setLocalUrl(std::string url) { localUrl_ = std::move(url); }

    WebIntake intake(const WebRequest& request, std::uint64_t length) override;
    WebReply reply(const WebRequest& request) override;
    WebReply refusal(int status, const std::string& text) const override;

    struct Route;

private:
    struct Visit;
    struct Routing;

    Routing routeOf(const WebRequest& request) const;

    WebReply listArticles(Visit& visit);
    WebReply listMyArticles(Visit& visit);
    WebReply removeArticle(Visit& visit);
    WebReply likeArticle(Visit& visit);
    WebReply loadArticle(Visit& visit);
    WebReply addComment(Visit& visit);
    WebReply olderComments(Visit& visit);
    WebReply articlePage(Visit& visit, const std::optional<std::int64_t>& author, const std::string& path);

    WebReply writeArticle(Visit& visit);
    WebReply changeImage(Visit& visit);
    WebReply changeVideo(Visit& visit);
    WebReply removeImage(Visit& visit);
    WebReply removeVideo(Visit& visit);
    WebReply changeMedium(Visit& visit, MediumKind kind);
    WebReply removeMedium(Visit& visit, MediumKind kind);
    WebReply uploadImage(Visit& visit);
    WebReply uploadVideo(Visit& visit);
    WebIntake admitImage(Visit& visit, std::uint64_t length);
    WebIntake admitVideo(Visit& visit, std::uint64_t length);
    struct Admission;
    WebIntake admit(Visit& visit, std::uint64_t length, const Admission& admission);
    /// Who sends an upload, and where it goes.
    struct Upload;
    ServerResult<Upload> uploadOf(Visit& visit);
    ServerResult<PublishRequest> publishRequest(const Visit& visit, const StoredUser& user) const;
    /// The article as the store has it now.
    WebReply articleReply(Visit& visit, std::int64_t id);

    WebReply signUp(Visit& visit);
    WebReply signIn(Visit& visit);
    WebReply signOut(Visit& visit);
    WebReply currentUser(Visit& visit);
    WebReply uploadAvatar(Visit& visit);
    WebReply startSession(Visit& visit, const StoredUser& user);

    WebReply notify(Visit& visit);
    WebReply listNotifications(Visit& visit);
    WebReply markNotificationsRead(Visit& visit);

    WebReply avatar(Visit& visit);
    WebReply mediaFile(Visit& visit);
    WebReply publicPage(Visit& visit);
    WebReply styleSheet(Visit& visit);

    /// The signed-in user, or absent. Lengthens a session that has been used for a day.
    ServerResult<std::optional<StoredUser>> signedIn(Visit& visit);
    /// The signed-in user; SignedOut when nobody is.
    ServerResult<StoredUser> signedInOnly(Visit& visit);
    ServerResult<std::int64_t> articleId(const Visit& visit) const;
    /// The query's "before", absent when it is not given; BadInput when it is no number.
    static ServerResult<std::optional<std::int64_t>> pageStart(const Visit& visit);
    std::string baseUrl(const WebRequest& request) const;
    std::string cookie(std::string_view name, std::string_view value, std::int64_t seconds) const;

    ArticleStore& store_;
    MediaFolder& media_;
    const std::string publicUrl_;
    const std::function<ServerTime()> now_;
    std::string localUrl_;
    PasswordHasher hasher_;
    AvatarPainter avatars_;
    AttemptLimiter signInsByName_;
    AttemptLimiter signInsByAddress_;
    AttemptLimiter signUps_;
    AttemptLimiter visitors_;
    AttemptLimiter comments_;
    AttemptLimiter notifications_;
    AttemptLimiter articles_;
    std::shared_ptr<std::atomic<int>> uploads_ = std::make_shared<std::atomic<int>>(0);  ///< under way
    MediaDoor door_;

    friend struct ArticleServiceRoutes;
};

}  // namespace articleserver
