#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/common/ServerText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace articleserver {

struct StoredUser {
    std::int64_t id = 0;
    std::string name;
    std::string passwordHash;  ///< empty: nobody can sign in as this user
    std::string avatar;        ///< media name; empty: none was uploaded
};

struct StoredImage {
    std::int64_t id = 0;
    std::string file;       ///< media name
    std::string thumbnail;  ///< media name
    int width = 0;          ///< pixels of file
    int height = 0;
    std::string text;
};

struct StoredVideo {
    std::int64_t id = 0;
    std::string file;
    std::string thumbnail;
    int width = 0;
    int height = 0;
    double duration = 0;  ///< seconds
    std::string text;
    /// Where it was taken, as it was sent; kept, not shown.
    std::string altitude, longitude, latitude;
};

struct StoredComment {
    std::int64_t id = 0;
    std::int64_t authorId = 0;
    std::string authorName;
    ServerTime date = 0;
    std::string text;
};

/// A short message of one user to another.
struct StoredNotification {
    std::int64_t id = 0;
    std::int64_t senderId = 0;
    std::string senderName;
    std::int64_t recipientId = 0;
    ServerTime date = 0;
    std::string title;
    std::string text;
    bool isRead = false;
};

struct StoredArticle {
    std::int64_t id = 0;
    std::int64_t authorId = 0;
    std::string authorName;
    std::string title;
    std::string text;
    ServerTime modified = 0;
    bool openComment = true;
    std::int64_t likes = 0;
    std::int64_t comments = 0;
    std::vector<StoredImage> images;  ///< in display order
    std::vector<StoredVideo> videos;  ///< in display order
};

struct StoredSession {
    StoredUser user;
    ServerTime expires = 0;
};

struct ArticlePage {
    std::vector<StoredArticle> articles;  ///< newest first, that is by descending id
    bool hasMore = false;
};

/// Which page: everybody's articles or one author's, newest first or those older than an id.
struct ArticlePageQuery {
    std::optional<std::int64_t> author;
    std::optional<std::int64_t> before;
    int limit = 20;
    /// The page ends with the article whose texts go beyond it.
    std::size_t maximumBytes = SIZE_MAX;
};

/// Which comments of an article: the newest, or the newest of those older than an id. Ends after `limit` comments or
/// with the one whose text goes beyond `maximumBytes`, whichever comes first.
struct CommentQuery {
    std::int64_t article = 0;
    std::optional<std::int64_t> before = std::nullopt;
    int limit = 0;
    std::size_t maximumBytes = 0;
};

struct CommentPage {
    std::vector<StoredComment> comments;  ///< oldest first
    bool hasMore = false;                 ///< there are older ones
};

struct NotificationPage {
    std::vector<StoredNotification> notifications;  ///< newest first
    bool hasMore = false;                           ///< there are older ones
    std::int64_t unread = 0;                        ///< of all, not of this page
};

enum class MediumKind { image, video };

/// A request that may come twice: who sent it, by which key it is known (empty: by none), and when.
struct PublishRequest {
    std::int64_t user = 0;
    std::string key;
    ServerTime now = 0;
};

/// Where a new image or video goes.
struct MediumPlace {
    std::int64_t article = 0;
    std::int64_t position = 0;
};

/// What a request made, now or when it came for the first time.
struct PublishedId {
    std::int64_t id = 0;
    bool isRepeat = false;
};

/// What is changed of an image or video; absent: left as it is.
struct MediumChange {
    std::optional<std::string> text;
    std::optional<std::int64_t> position;
};

/// Everything of one article to be brought in at once; ids inside are given by the store.
struct ImportedArticle {
    StoredArticle article;                ///< authorId is an index into ImportedContent::users
    std::vector<StoredComment> comments;  ///< authorId likewise
    std::vector<std::string> likers;      ///< distinct
};

struct ImportedContent {
    std::vector<StoredUser> users;
    std::vector<ImportedArticle> articles;          ///< oldest first
    std::vector<StoredNotification> notifications;  ///< oldest first; users are indices as above
    ServerTime date = 0;
};

/// Where the article server keeps everything but the bytes of media files. Implementations may be called
/// from any thread at once. Each operation is one transaction: it happens wholly or not at all. Operations
/// that can find nothing answer an empty optional; failures are those of the storage itself unless said.
class ArticleStore {
public:
    virtual ~ArticleStore() = default;

    /// The new user's id. Conflict when another name has the same key (see nameKey).
    virtual ServerResult<std::int64_t> addUser(const StoredUser& user, ServerTime now) = 0;
    virtual ServerResult<std::optional<StoredUser>> userNamed(std::string_view name) const = 0;
    virtual ServerResult<std::optional<StoredUser>> user(std::int64_t id) const = 0;
    /// The media name that was replaced, empty when there was none. NotFound for an unknown user.
    virtual ServerResult<std::string> setAvatar(std::int64_t user, std::string_view mediaName) = 0;

    /// Keeps at most ServerLimits::sessionsPerUser of the user's sessions, the latest to expire, and drops
    /// everybody's expired ones. Only hashes of tokens come here.
    virtual ServerResult<ServerDone> addSession(std::int64_t user, std::string_view tokenHash,
                                                ServerTime expires, ServerTime now) = 0;
    /// An expired session is not found.
    virtual ServerResult<std::optional<StoredSession>> session(std::string_view tokenHash,
                                                               ServerTime now) const = 0;
    virtual ServerResult<ServerDone> extendSession(std::string_view tokenHash, ServerTime expires) = 0;
    virtual ServerResult<ServerDone> removeSession(std::string_view tokenHash) = 0;

    /// The new article's id, greater than every id given before. Reads authorId, title, text, modified,
    /// openComment, images and videos of the argument.
    virtual ServerResult<std::int64_t> addArticle(const StoredArticle& article) = 0;
    virtual ServerResult<ArticlePage> articles(const ArticlePageQuery& query) const = 0;
    virtual ServerResult<std::optional<StoredArticle>> article(std::int64_t id) const = 0;
    /// Removes the article with its images, videos, comments and likes; answers the names of its media
    /// files, which are the caller's to delete. NotFound, or Forbidden when `user` is not its author.
    virtual ServerResult<std::vector<std::string>> removeArticle(std::int64_t id, std::int64_t user) = 0;

    // Publishing. All but the first are refused as NotFound, or as Forbidden when `user` is not the author; a change of an
    // image or video is one of its article, too.

    /// Reads title and text. A request whose key is known makes nothing anew.
    virtual ServerResult<PublishedId> createArticle(const PublishRequest& request,
                                                    const StoredArticle& article) = 0;
    virtual ServerResult<ServerDone> updateArticle(std::int64_t id, const PublishRequest& request,
                                                   std::string_view title, std::string_view text) = 0;
    /// Whether `user` may change the article: tells before a long upload what it would be told after.
    virtual ServerResult<ServerDone> checkAuthor(std::int64_t article, std::int64_t user) const = 0;
    /// TooLarge when the article has as many media, or captions as long, as it may.
    virtual ServerResult<PublishedId> addImage(const PublishRequest& request, const MediumPlace& place,
                                               const StoredImage& image) = 0;
    virtual ServerResult<PublishedId> addVideo(const PublishRequest& request, const MediumPlace& place,
                                               const StoredVideo& video) = 0;
    virtual ServerResult<ServerDone> changeMedium(MediumKind kind, std::int64_t id,
                                                  const PublishRequest& request,
                                                  const MediumChange& change) = 0;
    /// The names of its files, which are the caller's to delete.
    virtual ServerResult<std::vector<std::string>> removeMedium(MediumKind kind, std::int64_t id,
                                                                const PublishRequest& request) = 0;

    /// The like count afterwards. A second like of the same liker changes nothing. NotFound.
    virtual ServerResult<std::int64_t> likeArticle(std::int64_t id, std::string_view liker) = 0;

    /// The comment count afterwards. NotFound, or Forbidden when comments are closed.
    virtual ServerResult<std::int64_t> addComment(std::int64_t article, std::int64_t author,
                                                  std::string_view text, ServerTime now) = 0;
    /// No comments for an unknown article.
    virtual ServerResult<CommentPage> comments(const CommentQuery& query) const = 0;

    /// The new notification's id. Reads senderId, recipientId, date, title and text. Of a recipient the newest
    /// ServerLimits::notificationsPerUser are kept. NotFound for an unknown recipient.
    virtual ServerResult<std::int64_t> addNotification(const StoredNotification& notification) = 0;
    /// Of `recipient`, newest first; those older than `before` when it is given.
    virtual ServerResult<NotificationPage> notifications(std::int64_t recipient,
                                                         std::optional<std::int64_t> before,
                                                         int limit) const = 0;
    /// Marks all of the recipient's up to and including an id as read; the number of unread ones that are left.
    virtual ServerResult<std::int64_t> markNotificationsRead(std::int64_t recipient, std::int64_t upTo) = 0;

    virtual ServerResult<bool> isEmpty() const = 0;
    /// Conflict when the store is not empty.
    virtual ServerResult<ServerDone> importInto(const ImportedContent& content) = 0;
    /// Every media name that a user, image or video refers to.
    virtual ServerResult<std::vector<std::string>> mediaNames() const = 0;
};

}  // namespace articleserver
