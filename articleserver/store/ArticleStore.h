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
    /// Empty: nobody can sign in as this user.
    std::string passwordHash;
    /// A media name; empty: the user has not uploaded an avatar.
    std::string avatar;
};

struct StoredImage {
    std::int64_t id = 0;
    std::string file;       ///< media name
    std::string thumbnail;  ///< media name
    int width = 0;          ///< of the file, in pixels
    int height = 0;         ///< likewise
    std::string text;       ///< the caption
};

struct StoredVideo {
    std::int64_t id = 0;
    std::string file;       ///< media name
    std::string thumbnail;  ///< media name
    int width = 0;          ///< as shown, in pixels
    int height = 0;         ///< likewise
    double duration = 0;    ///< in seconds
    std::string text;       ///< the caption
    /// The place of the recording, unchanged from the upload. The server stores the place and shows it
    /// nowhere.
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
    std::vector<StoredArticle> articles;  ///< by descending id, so the newest is the first
    bool hasMore = false;
};

/// Selects a page of articles: of all authors or of one, from the newest on or from those below an id.
struct ArticlePageQuery {
    std::optional<std::int64_t> author;
    std::optional<std::int64_t> before;
    int limit = 20;
    /// The page ends early with the article whose texts exceed this sum.
    std::size_t maximumBytes = SIZE_MAX;
};

/// Selects comments of an article: the newest, or the newest of those below an id. The page ends after
/// `limit` comments, or earlier with the comment whose text exceeds `maximumBytes` in sum.
struct CommentQuery {
    std::int64_t article = 0;
    std::optional<std::int64_t> before = std::nullopt;
    int limit = 0;
    std::size_t maximumBytes = 0;
};

struct CommentPage {
    std::vector<StoredComment> comments;  ///< oldest first
    bool hasMore = false;                 ///< the article has older comments
};

struct NotificationPage {
    std::vector<StoredNotification> notifications;  ///< newest first
    bool hasMore = false;                           ///< the recipient has older notifications
    std::int64_t unread = 0;                        ///< the unread ones on all pages
};

enum class MediumKind { image, video };

/// A request that a client may repeat: its sender, its Idempotency-Key (empty: none) and its time.
struct PublishRequest {
    std::int64_t user = 0;
    std::string key;
    ServerTime now = 0;
};

/// The place of a new image or video.
struct MediumPlace {
    std::int64_t article = 0;
    std::int64_t position = 0;
};

/// The id that a request made. A repeated request has the id that its first arrival made.
struct PublishedId {
    std::int64_t id = 0;
    bool isRepeat = false;
};

/// The change of an image or video. An absent member stays unchanged.
struct MediumChange {
    std::optional<std::string> text;
    std::optional<std::int64_t> position;
};

/// One article with all that belongs to it, for importInto(). The store chooses the ids.
struct ImportedArticle {
    /// Its authorId is an index into ImportedContent::users.
    StoredArticle article;
    /// Their authorId is such an index, too.
    std::vector<StoredComment> comments;
    /// All different.
    std::vector<std::string> likers;
};

struct ImportedContent {
    std::vector<StoredUser> users;
    std::vector<ImportedArticle> articles;  ///< oldest first
    /// Oldest first. Their senderId and recipientId are indices into `users`.
    std::vector<StoredNotification> notifications;
    /// The date at which the users joined.
    ServerTime date = 0;
};

/// Stores all data of the article server except the bytes of media files. Any threads may call an
/// implementation at the same time. Each operation is one transaction. An operation that looks for a record
/// returns an empty optional when the record does not exist. Every operation can fail with a fault of the
/// storage itself; the comments name further faults.
class ArticleStore {
public:
    virtual ~ArticleStore() = default;

    /// Returns the new user's id. `conflict` when a user's name has the same key (see nameKey).
    virtual ServerResult<std::int64_t> addUser(const StoredUser& user, ServerTime now) = 0;
    virtual ServerResult<std::optional<StoredUser>> userNamed(std::string_view name) const = 0;
    virtual ServerResult<std::optional<StoredUser>> user(std::int64_t id) const = 0;
    /// Returns the media name of the replaced avatar, empty when the user had none. `notFound` for an unknown
    /// user.
    virtual ServerResult<std::string> setAvatar(std::int64_t user, std::string_view mediaName) = 0;

    /// Of the user's sessions, keeps the ServerLimits::sessionsPerUser that expire last; removes the expired
    /// sessions of all users. Callers pass hashes of tokens, never tokens.
    virtual ServerResult<void> addSession(std::int64_t user, std::string_view tokenHash, ServerTime expires,
                                          ServerTime now) = 0;
    /// Absent for an expired session.
    virtual ServerResult<std::optional<StoredSession>> session(std::string_view tokenHash, ServerTime now) const = 0;
    virtual ServerResult<void> extendSession(std::string_view tokenHash, ServerTime expires) = 0;
    virtual ServerResult<void> removeSession(std::string_view tokenHash) = 0;

    /// Returns the new article's id, which is greater than all earlier ids. Reads authorId, title, text,
    /// modified, openComment, images and videos of the argument.
    virtual ServerResult<std::int64_t> addArticle(const StoredArticle& article) = 0;
    virtual ServerResult<ArticlePage> articles(const ArticlePageQuery& query) const = 0;
    virtual ServerResult<std::optional<StoredArticle>> article(std::int64_t id) const = 0;
    /// Removes the article with its images, videos, comments and likes. Returns the names of its media files,
    /// which the caller deletes. `notFound`; `forbidden` when `user` is not the author.
    virtual ServerResult<std::vector<std::string>> removeArticle(std::int64_t id, std::int64_t user) = 0;

    // Publishing. All operations but the first fail with `notFound`, or with `forbidden` when the user is not
    // the author. A change of an image or a video also sets the modification date of its article.

    /// Reads title and text of the argument. A repeated request makes no second article.
    virtual ServerResult<PublishedId> createArticle(const PublishRequest& request, const StoredArticle& article) = 0;
    virtual ServerResult<void> updateArticle(std::int64_t id, const PublishRequest& request, std::string_view title,
                                             std::string_view text) = 0;
    /// Checks whether `user` may change the article, so that a long upload is refused before it begins.
    virtual ServerResult<void> checkAuthor(std::int64_t article, std::int64_t user) const = 0;
    /// `tooLarge` when the article would exceed the limits for its media or for its captions.
    virtual ServerResult<PublishedId> addImage(const PublishRequest& request, const MediumPlace& place,
                                               const StoredImage& image) = 0;
    virtual ServerResult<PublishedId> addVideo(const PublishRequest& request, const MediumPlace& place,
                                               const StoredVideo& video) = 0;
    virtual ServerResult<void> changeMedium(MediumKind kind, std::int64_t id, const PublishRequest& request,
                                            const MediumChange& change) = 0;
    /// Returns the names of the files of the medium, which the caller deletes.
    virtual ServerResult<std::vector<std::string>> removeMedium(MediumKind kind, std::int64_t id,
                                                                const PublishRequest& request) = 0;

    /// Returns the new number of likes. A second like of the same liker changes nothing. `notFound`.
    virtual ServerResult<std::int64_t> likeArticle(std::int64_t id, std::string_view liker) = 0;

    /// Returns the new number of comments. `notFound`; `forbidden` when comments are closed.
    virtual ServerResult<std::int64_t> addComment(std::int64_t article, std::int64_t author, std::string_view text,
                                                  ServerTime now) = 0;
    /// The page of an unknown article is empty.
    virtual ServerResult<CommentPage> comments(const CommentQuery& query) const = 0;

    /// Returns the new notification's id. Reads senderId, recipientId, date, title and text. The recipient
    /// keeps the newest ServerLimits::notificationsPerUser. `notFound` for an unknown recipient.
    virtual ServerResult<std::int64_t> addNotification(const StoredNotification& notification) = 0;
    /// The newest notifications of `recipient`, or the newest of those with an id below `before`.
    virtual ServerResult<NotificationPage> notifications(std::int64_t recipient, std::optional<std::int64_t> before,
                                                         int limit) const = 0;
    /// Marks the recipient's notifications up to and including an id as read. Returns the number of unread
    /// ones.
    virtual ServerResult<std::int64_t> markNotificationsRead(std::int64_t recipient, std::int64_t upTo) = 0;

    /// True when the store has no users.
    virtual ServerResult<bool> isEmpty() const = 0;
    /// Fills an empty store. `conflict` when the store is not empty.
    virtual ServerResult<void> importInto(const ImportedContent& content) = 0;
    /// The names of all media files that a user, an image or a video refers to.
    virtual ServerResult<std::vector<std::string>> mediaNames() const = 0;
};

}  // namespace articleserver
