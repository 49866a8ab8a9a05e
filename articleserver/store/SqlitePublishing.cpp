#include "articleserver/common/ServerLimits.h"
#include "articleserver/store/SqliteArticleStore.h"
#include "articleserver/store/SqliteParts.h"

#include <chrono>
#include <optional>

namespace articleserver {

namespace {

using Kind = SqliteTransaction::Kind;
using Names = std::vector<std::string>;

ServerFailure notTheAuthor() { return {ServerFault::forbidden, "Only its author can change an article."}; }

ServerFailure noMedium(MediumKind kind) {
    return {ServerFault::notFound, kind == MediumKind::image ? "There is no such picture." : "There is no such video."};
}

ServerResult<void> requireAuthor(SqliteConnection& connection, std::int64_t article, std::int64_t user) {
    SqliteStatement row = connection.prepare("SELECT author_id FROM articles WHERE id = ?", article);
    if (!row.step()) return row.failed() ? connection.failure() : noArticle();
    if (row.integer(0) != user) return notTheAuthor();
    return {};
}

bool touch(SqliteConnection& connection, std::int64_t article, ServerTime now) {
    return connection.prepare("UPDATE articles SET modified = ? WHERE id = ?", now, article).run();
}

/// The id that the first arrival of this request made; absent when the request is new or has no key.
ServerResult<std::optional<std::int64_t>> madeBefore(SqliteConnection& connection, const PublishRequest& request) {
    using Made = std::optional<std::int64_t>;
    if (request.key.empty()) return Made();
    SqliteStatement row = connection.prepare(
        "SELECT made_id FROM published_requests WHERE user_id = ? AND request_key = ?", request.user, request.key);
    if (row.step()) return Made(row.integer(0));
    if (row.failed()) return connection.failure();
    return Made();
}

bool remember(SqliteConnection& connection, const PublishRequest& request, std::int64_t id) {
    if (request.key.empty()) return true;
    const ServerTime life = std::chrono::duration_cast<std::chrono::milliseconds>(ServerLimits::repeatLife).count();
    return connection.prepare("DELETE FROM published_requests WHERE published < ?", request.now - life).run() &&
           connection
               .prepare("INSERT INTO published_requests (user_id, request_key, made_id, published) "
                        "VALUES (?, ?, ?, ?)",
                        request.user, request.key, id, request.now)
               .run();
}

/// Runs `insert`, which returns the new id, unless the request is a repeated one.
template <typename Insert>
ServerResult<PublishedId> once(SqliteConnection& connection, const PublishRequest& request, Insert insert) {
    auto made = madeBefore(connection, request);
    if (!made) return made.failure();
    if (*made) return PublishedId{**made, true};
    ServerResult<std::int64_t> id = insert();
    if (!id) return id.failure();
    if (!remember(connection, request, *id)) return connection.failure();
    return PublishedId{*id, false};
}

/// The article of an image or video, after the check that `user` is its author.
ServerResult<std::int64_t> articleOfMedium(SqliteConnection& connection, MediumKind kind, std::int64_t id,
                                           std::int64_t user) {
    SqliteStatement row = kind == MediumKind::image
                              ? connection.prepare("SELECT a.id, a.author_id FROM images m JOIN articles a "
                                                   "ON a.id = m.article_id WHERE m.id = ?",
                                                   id)
                              : connection.prepare("SELECT a.id, a.author_id FROM videos m JOIN articles a "
                                                   "ON a.id = m.article_id WHERE m.id = ?",
                                                   id);
    if (!row.step()) return row.failed() ? connection.failure() : noMedium(kind);
    if (row.integer(1) != user) return notTheAuthor();
    return row.integer(0);
}

/// Checks the sum of the article's captions after a change of one of them.
ServerResult<void> requireCaptionRoom(SqliteConnection& connection, std::int64_t article) {
    // LENGTH counts the characters of a text, but the bytes of a blob.
    auto bytes =
        numberOf(connection,
                 connection.prepare(
                     "SELECT (SELECT COALESCE(SUM(LENGTH(CAST(text AS BLOB))), 0) FROM images WHERE article_id = ?) + "
                     "(SELECT COALESCE(SUM(LENGTH(CAST(text AS BLOB))), 0) FROM videos WHERE article_id = ?)",
                     article, article));
    if (!bytes) return bytes.failure();
    if (*bytes > ServerLimits::captionBytesPerArticle) {
        return ServerFailure{ServerFault::tooLarge, "The captions of the article are too long."};
    }
    return {};
}

/// Checks the author and the limits of the article, runs `insert` and returns the new medium's id.
template <typename Insert>
ServerResult<std::int64_t> insertMedium(SqliteConnection& connection, MediumKind kind, const PublishRequest& request,
                                        const MediumPlace& place, Insert insert) {
    auto isAuthor = requireAuthor(connection, place.article, request.user);
    if (!isAuthor) return isAuthor.failure();
    auto count = numberOf(connection,
                          kind == MediumKind::image
                              ? connection.prepare("SELECT COUNT(*) FROM images WHERE article_id = ?", place.article)
                              : connection.prepare("SELECT COUNT(*) FROM videos WHERE article_id = ?", place.article));
    if (!count) return count.failure();
    if (*count >= ServerLimits::mediaPerArticle) {
        return ServerFailure{ServerFault::tooLarge, "The article cannot hold more."};
    }
    std::int64_t id = 0;
    {
        SqliteStatement statement = insert();
        if (!statement.step()) return connection.failure();
        id = statement.integer(0);
    }
    auto hasRoom = requireCaptionRoom(connection, place.article);
    if (!hasRoom) return hasRoom.failure();
    if (!touch(connection, place.article, request.now)) return connection.failure();
    return id;
}

}  // namespace

ServerResult<PublishedId> SqliteArticleStore::createArticle(const PublishRequest& request,
                                                            const StoredArticle& article) {
    return transact<PublishedId>(Kind::write, [&](SqliteConnection& connection) {
        return once(connection, request, [&]() -> ServerResult<std::int64_t> {
            SqliteStatement insert =
                connection.prepare("INSERT INTO articles (author_id, title, text, modified, open_comment) "
                                   "VALUES (?, ?, ?, ?, 1) RETURNING id",
                                   request.user, article.title, article.text, request.now);
            if (!insert.step()) return connection.failure();
            return insert.integer(0);
        });
    });
}

ServerResult<void> SqliteArticleStore::updateArticle(std::int64_t id, const PublishRequest& request,
                                                     std::string_view title, std::string_view text) {
    return transact<void>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<void> {
        auto isAuthor = requireAuthor(connection, id, request.user);
        if (!isAuthor) return isAuthor;
        SqliteStatement update = connection.prepare(
            "UPDATE articles SET title = ?, text = ?, modified = ? WHERE id = ?", title, text, request.now, id);
        if (!update.run()) return connection.failure();
        return {};
    });
}

ServerResult<void> SqliteArticleStore::checkAuthor(std::int64_t article, std::int64_t user) const {
    return transact<void>(Kind::read,
                          [&](SqliteConnection& connection) { return requireAuthor(connection, article, user); });
}

ServerResult<PublishedId> SqliteArticleStore::addImage(const PublishRequest& request, const MediumPlace& place,
                                                       const StoredImage& image) {
    return transact<PublishedId>(Kind::write, [&](SqliteConnection& connection) {
        return once(connection, request, [&] {
            return insertMedium(connection, MediumKind::image, request, place, [&] {
                return connection.prepare(
                    "INSERT INTO images (article_id, position, file, thumbnail, width, height, text) "
                    "VALUES (?, ?, ?, ?, ?, ?, ?) RETURNING id",
                    place.article, place.position, image.file, image.thumbnail, image.width, image.height, image.text);
            });
        });
    });
}

ServerResult<PublishedId> SqliteArticleStore::addVideo(const PublishRequest& request, const MediumPlace& place,
                                                       const StoredVideo& video) {
    return transact<PublishedId>(Kind::write, [&](SqliteConnection& connection) {
        return once(connection, request, [&] {
            return insertMedium(connection, MediumKind::video, request, place, [&] {
                return connection.prepare(
                    "INSERT INTO videos (article_id, position, file, thumbnail, width, height, duration, "
                    "text, altitude, longitude, latitude) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?) "
                    "RETURNING id",
                    place.article, place.position, video.file, video.thumbnail, video.width, video.height,
                    video.duration, video.text, video.altitude, video.longitude, video.latitude);
            });
        });
    });
}

ServerResult<void> SqliteArticleStore::changeMedium(MediumKind kind, std::int64_t id, const PublishRequest& request,
                                                    const MediumChange& change) {
    return transact<void>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<void> {
        auto article = articleOfMedium(connection, kind, id, request.user);
        if (!article) return article.failure();
        const bool isImage = kind == MediumKind::image;
        if (change.text) {
            SqliteStatement update = connection.prepare(isImage ? "UPDATE images SET text = ? WHERE id = ?"
                                                                : "UPDATE videos SET text = ? WHERE id = ?",
                                                        *change.text, id);
            if (!update.run()) return connection.failure();
            auto hasRoom = requireCaptionRoom(connection, *article);
            if (!hasRoom) return hasRoom;
        }
        if (change.position) {
            SqliteStatement update = connection.prepare(isImage ? "UPDATE images SET position = ? WHERE id = ?"
                                                                : "UPDATE videos SET position = ? WHERE id = ?",
                                                        *change.position, id);
            if (!update.run()) return connection.failure();
        }
        if (!touch(connection, *article, request.now)) return connection.failure();
        return {};
    });
}

ServerResult<Names> SqliteArticleStore::removeMedium(MediumKind kind, std::int64_t id, const PublishRequest& request) {
    return transact<Names>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<Names> {
        auto article = articleOfMedium(connection, kind, id, request.user);
        if (!article) return article.failure();
        const bool isImage = kind == MediumKind::image;
        Names names;
        {
            SqliteStatement removed =
                connection.prepare(isImage ? "DELETE FROM images WHERE id = ? RETURNING file, thumbnail"
                                           : "DELETE FROM videos WHERE id = ? RETURNING file, thumbnail",
                                   id);
            while (removed.step()) {
                names.push_back(removed.text(0));
                names.push_back(removed.text(1));
            }
            if (removed.failed()) return connection.failure();
        }
        if (!touch(connection, *article, request.now)) return connection.failure();
        return names;
    });
}

}  // namespace articleserver
