#pragma once

#include "articleserver/http/HttpServer.h"
#include "articleserver/media/AvatarPainter.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/media/MediaIngest.h"
#include "articleserver/routes/AttemptLimiter.h"
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

/// The routes of the article server: checks who may do what and makes the answers. docs/protocol.md describes
/// the requests. The sources *Routes.cpp implement the handlers. Several threads of the HTTP server call it
/// at the same time; its only state is limiters and caches.
class ArticleService final : public WebService {
public:
    /// `publicUrl` is the scheme and host in front of "/article/ID" and "/media/NAME", without a slash at its
    /// end. When it is empty, addresses have the Host header of the request.
    ArticleService(ArticleStore& store, MediaFolder& media, std::string publicUrl, std::function<ServerTime()> now);

    /// Sets the scheme and host for requests without a valid Host header. Called before the server serves.
    void setLocalUrl(std::string url) { localUrl_ = std::move(url); }

    WebIntake intake(const WebRequest& request, std::uint64_t length) override;
    WebReply reply(const WebRequest& request) override;
    WebReply refusal(int status, const std::string& text) const override;

    struct Route;

private:
    struct RequestContext;
    struct Routing;

    Routing routeOf(const WebRequest& request) const;

    WebReply listArticles(RequestContext& context);
    WebReply listMyArticles(RequestContext& context);
    WebReply removeArticle(RequestContext& context);
    WebReply likeArticle(RequestContext& context);
    WebReply loadArticle(RequestContext& context);
    WebReply addComment(RequestContext& context);
    WebReply olderComments(RequestContext& context);
    WebReply articlePage(RequestContext& context, const std::optional<std::int64_t>& author, const std::string& path);

    WebReply writeArticle(RequestContext& context);
    WebReply changeImage(RequestContext& context);
    WebReply changeVideo(RequestContext& context);
    WebReply removeImage(RequestContext& context);
    WebReply removeVideo(RequestContext& context);
    WebReply changeMedium(RequestContext& context, MediumKind kind);
    WebReply removeMedium(RequestContext& context, MediumKind kind);
    WebReply uploadImage(RequestContext& context);
    WebReply uploadVideo(RequestContext& context);
    WebIntake admitImage(RequestContext& context, std::uint64_t length);
    WebIntake admitVideo(RequestContext& context, std::uint64_t length);
    struct Admission;
    WebIntake admit(RequestContext& context, std::uint64_t length, const Admission& admission);
    /// The sender of an upload and the place of the new medium.
    struct Upload;
    ServerResult<Upload> uploadOf(RequestContext& context);
    ServerResult<PublishRequest> publishRequest(const RequestContext& context, const StoredUser& user) const;
    /// The reply with the current record of an article.
    WebReply articleReply(RequestContext& context, std::int64_t id);

    WebReply signUp(RequestContext& context);
    WebReply signIn(RequestContext& context);
    WebReply signOut(RequestContext& context);
    WebReply currentUser(RequestContext& context);
    WebReply uploadAvatar(RequestContext& context);
    WebReply startSession(RequestContext& context, const StoredUser& user);

    WebReply notify(RequestContext& context);
    WebReply listNotifications(RequestContext& context);
    WebReply markNotificationsRead(RequestContext& context);

    WebReply avatar(RequestContext& context);
    WebReply mediaFile(RequestContext& context);
    WebReply publicPage(RequestContext& context);
    WebReply styleSheet(RequestContext& context);

    /// The signed-in user, or absent. Extends a session whose last extension is at least a day old.
    ServerResult<std::optional<StoredUser>> signedIn(RequestContext& context);
    /// The signed-in user; `signedOut` when the request has no valid session.
    ServerResult<StoredUser> signedInOnly(RequestContext& context);
    ServerResult<std::int64_t> articleId(const RequestContext& context) const;
    /// The number "before" of the query; absent when the query has none, `badInput` when it is not a number.
    static ServerResult<std::optional<std::int64_t>> pageStart(const RequestContext& context);
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
    /// The number of running uploads. Their receivers share it, because they can live longer than a call.
    std::shared_ptr<std::atomic<int>> uploads_ = std::make_shared<std::atomic<int>>(0);
    MediaIngest ingest_;

    friend struct ArticleServiceRoutes;
};

}  // namespace articleserver
