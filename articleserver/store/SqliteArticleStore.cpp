#include "articleserver/store/SqliteArticleStore.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/store/SqliteParts.h"
#include "articleserver/store/SqliteSchema.h"

#include <limits>

namespace articleserver {

namespace {

using Kind = SqliteTransaction::Kind;

StoredUser userOf(const SqliteStatement& row) { return {row.integer(0), row.text(1), row.text(2), row.text(3)}; }

StoredArticle articleOf(const SqliteStatement& row) {
    StoredArticle article;
    article.id = row.integer(0);
    article.authorId = row.integer(1);
    article.authorName = row.text(2);
    article.title = row.text(3);
    article.text = row.text(4);
    article.modified = row.integer(5);
    article.openComment = row.integer(6) != 0;
    article.likes = row.integer(7);
    article.comments = row.integer(8);
    return article;
}

bool readMedia(SqliteConnection& connection, StoredArticle& article) {
    SqliteStatement images = connection.prepare("SELECT id, file, thumbnail, width, height, text FROM images "
                                                "WHERE article_id = ? ORDER BY position, id",
                                                article.id);
    while (images.step()) {
        article.images.push_back({images.integer(0), images.text(1), images.text(2),
                                  static_cast<int>(images.integer(3)), static_cast<int>(images.integer(4)),
                                  images.text(5)});
    }
    SqliteStatement videos = connection.prepare("SELECT id, file, thumbnail, width, height, duration, text FROM videos "
                                                "WHERE article_id = ? ORDER BY position, id",
                                                article.id);
    while (videos.step()) {
        article.videos.push_back({videos.integer(0), videos.text(1), videos.text(2),
                                  static_cast<int>(videos.integer(3)), static_cast<int>(videos.integer(4)),
                                  videos.real(5), videos.text(6)});
    }
    return !images.failed() && !videos.failed();
}

std::size_t textBytesOf(const StoredArticle& article) {
    std::size_t bytes = article.title.size() + article.text.size();
    for (const StoredImage& image : article.images) bytes += image.text.size();
    for (const StoredVideo& video : article.videos) bytes += video.text.size();
    return bytes;
}

ServerResult<std::int64_t> insertUser(SqliteConnection& connection, const StoredUser& user, ServerTime now) {
    std::string key = nameKey(user.name);
    SqliteStatement taken = connection.prepare("SELECT 1 FROM users WHERE name_key = ?", key);
    if (taken.step()) return ServerFailure{ServerFault::conflict, "The name is taken."};
    SqliteStatement insert =
        connection.prepare("INSERT INTO users (name, name_key, password_hash, avatar, created) VALUES (?, ?, ?, ?, ?) "
                           "RETURNING id",
                           user.name, key, user.passwordHash, user.avatar, now);
    if (taken.failed() || !insert.step()) return connection.failure();
    return insert.integer(0);
}

ServerResult<std::int64_t> insertArticle(SqliteConnection& connection, const StoredArticle& article) {
    std::int64_t id = 0;
    {
        SqliteStatement insert = connection.prepare(
            "INSERT INTO articles (author_id, title, text, modified, open_comment) VALUES (?, ?, ?, ?, ?) "
            "RETURNING id",
            article.authorId, article.title, article.text, article.modified, article.openComment);
        if (!insert.step()) return connection.failure();
        id = insert.integer(0);
    }
    int position = 0;
    for (const StoredImage& image : article.images) {
        SqliteStatement insert =
            connection.prepare("INSERT INTO images (article_id, position, file, thumbnail, width, height, text) "
                               "VALUES (?, ?, ?, ?, ?, ?, ?)",
                               id, position++, image.file, image.thumbnail, image.width, image.height, image.text);
        if (!insert.run()) return connection.failure();
    }
    position = 0;
    for (const StoredVideo& video : article.videos) {
        SqliteStatement insert = connection.prepare(
            "INSERT INTO videos (article_id, position, file, thumbnail, width, height, duration, text) "
            "VALUES (?, ?, ?, ?, ?, ?, ?, ?)",
            id, position++, video.file, video.thumbnail, video.width, video.height, video.duration, video.text);
        if (!insert.run()) return connection.failure();
    }
    return id;
}

bool insertLike(SqliteConnection& connection, std::int64_t article, std::string_view liker) {
    return connection.prepare("INSERT INTO likes (article_id, liker) VALUES (?, ?)", article, liker).run();
}

}  // namespace

ServerResult<std::unique_ptr<SqliteArticleStore>> SqliteArticleStore::open(const std::string& file) {
    std::unique_ptr<SqliteArticleStore> store(new SqliteArticleStore(file));
    auto connection = store->borrow();
    if (!connection) return connection.failure();
    auto migrated = migrateSchema(**connection);
    if (!migrated) return migrated.failure();
    store->giveBack(std::move(*connection));
    return store;
}

ServerResult<std::unique_ptr<SqliteConnection>> SqliteArticleStore::borrow() const {
    {
        std::lock_guard lock(idleMutex_);
        if (!idle_.empty()) {
            auto connection = std::move(idle_.back());
            idle_.pop_back();
            return connection;
        }
    }
    return SqliteConnection::open(file_);
}

void SqliteArticleStore::giveBack(std::unique_ptr<SqliteConnection> connection) const {
    std::lock_guard lock(idleMutex_);
    idle_.push_back(std::move(connection));
}

ServerResult<std::int64_t> SqliteArticleStore::addUser(const StoredUser& user, ServerTime now) {
    return transact<std::int64_t>(Kind::write,
                                  [&](SqliteConnection& connection) { return insertUser(connection, user, now); });
}

ServerResult<std::optional<StoredUser>> SqliteArticleStore::userNamed(std::string_view name) const {
    using Found = std::optional<StoredUser>;
    return transact<Found>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<Found> {
        std::string key = nameKey(name);
        SqliteStatement row =
            connection.prepare("SELECT id, name, password_hash, avatar FROM users WHERE name_key = ?", key);
        if (row.step()) return Found(userOf(row));
        if (row.failed()) return connection.failure();
        return Found();
    });
}

ServerResult<std::optional<StoredUser>> SqliteArticleStore::user(std::int64_t id) const {
    using Found = std::optional<StoredUser>;
    return transact<Found>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<Found> {
        SqliteStatement row = connection.prepare("SELECT id, name, password_hash, avatar FROM users WHERE id = ?", id);
        if (row.step()) return Found(userOf(row));
        if (row.failed()) return connection.failure();
        return Found();
    });
}

ServerResult<std::string> SqliteArticleStore::setAvatar(std::int64_t user, std::string_view mediaName) {
    return transact<std::string>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<std::string> {
        std::string replaced;
        {
            SqliteStatement row = connection.prepare("SELECT avatar FROM users WHERE id = ?", user);
            if (!row.step()) {
                if (row.failed()) return connection.failure();
                return ServerFailure{ServerFault::notFound, "There is no such user."};
            }
            replaced = row.text(0);
        }
        if (!connection.prepare("UPDATE users SET avatar = ? WHERE id = ?", mediaName, user).run()) {
            return connection.failure();
        }
        return replaced;
    });
}

ServerResult<void> SqliteArticleStore::addSession(std::int64_t user, std::string_view tokenHash, ServerTime expires,
                                                  ServerTime now) {
    return transact<void>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<void> {
        bool isDone = connection.prepare("DELETE FROM sessions WHERE expires <= ?", now).run() &&
                      connection
                          .prepare("INSERT INTO sessions (token_hash, user_id, expires) VALUES (?, ?, ?)", tokenHash,
                                   user, expires)
                          .run() &&
                      connection
                          .prepare("DELETE FROM sessions WHERE user_id = ? AND token_hash NOT IN (SELECT "
                                   "token_hash FROM sessions WHERE user_id = ? ORDER BY expires DESC LIMIT ?)",
                                   user, user, ServerLimits::sessionsPerUser)
                          .run();
        if (!isDone) return connection.failure();
        return {};
    });
}

ServerResult<std::optional<StoredSession>> SqliteArticleStore::session(std::string_view tokenHash,
                                                                       ServerTime now) const {
    using Found = std::optional<StoredSession>;
    return transact<Found>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<Found> {
        SqliteStatement row =
            connection.prepare("SELECT u.id, u.name, u.password_hash, u.avatar, s.expires FROM sessions s "
                               "JOIN users u ON u.id = s.user_id WHERE s.token_hash = ? AND s.expires > ?",
                               tokenHash, now);
        if (row.step()) return Found(StoredSession{userOf(row), row.integer(4)});
        if (row.failed()) return connection.failure();
        return Found();
    });
}

ServerResult<void> SqliteArticleStore::extendSession(std::string_view tokenHash, ServerTime expires) {
    return transact<void>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<void> {
        SqliteStatement update =
            connection.prepare("UPDATE sessions SET expires = ? WHERE token_hash = ?", expires, tokenHash);
        if (!update.run()) return connection.failure();
        return {};
    });
}

ServerResult<void> SqliteArticleStore::removeSession(std::string_view tokenHash) {
    return transact<void>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<void> {
        if (!connection.prepare("DELETE FROM sessions WHERE token_hash = ?", tokenHash).run()) {
            return connection.failure();
        }
        return {};
    });
}

ServerResult<std::int64_t> SqliteArticleStore::addArticle(const StoredArticle& article) {
    return transact<std::int64_t>(Kind::write,
                                  [&](SqliteConnection& connection) { return insertArticle(connection, article); });
}

ServerResult<ArticlePage> SqliteArticleStore::articles(const ArticlePageQuery& query) const {
    static constexpr const char* ofAll =
        "SELECT a.id, a.author_id, u.name, a.title, a.text, a.modified, a.open_comment, "
        "(SELECT COUNT(*) FROM likes l WHERE l.article_id = a.id), "
        "(SELECT COUNT(*) FROM comments c WHERE c.article_id = a.id) "
        "FROM articles a JOIN users u ON u.id = a.author_id "
        "WHERE a.id <= ? ORDER BY a.id DESC LIMIT ?";
    static constexpr const char* ofAuthor =
        "SELECT a.id, a.author_id, u.name, a.title, a.text, a.modified, a.open_comment, "
        "(SELECT COUNT(*) FROM likes l WHERE l.article_id = a.id), "
        "(SELECT COUNT(*) FROM comments c WHERE c.article_id = a.id) "
        "FROM articles a JOIN users u ON u.id = a.author_id "
        "WHERE a.author_id = ? AND a.id <= ? ORDER BY a.id DESC LIMIT ?";
    return transact<ArticlePage>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<ArticlePage> {
        std::int64_t newest = query.before ? *query.before - 1 : std::numeric_limits<std::int64_t>::max();
        ArticlePage page;
        {
            // The query asks for one row more than the page holds, to learn whether a next page exists.
            SqliteStatement row = query.author ? connection.prepare(ofAuthor, *query.author, newest, query.limit + 1)
                                               : connection.prepare(ofAll, newest, query.limit + 1);
            while (row.step()) page.articles.push_back(articleOf(row));
            if (row.failed()) return connection.failure();
        }
        page.hasMore = page.articles.size() > static_cast<std::size_t>(query.limit);
        if (page.hasMore) page.articles.pop_back();
        std::size_t bytes = 0;
        for (std::size_t index = 0; index < page.articles.size(); ++index) {
            if (!readMedia(connection, page.articles[index])) return connection.failure();
            bytes += textBytesOf(page.articles[index]);
            if (bytes < query.maximumBytes || index + 1 == page.articles.size()) continue;
            page.articles.resize(index + 1);
            page.hasMore = true;
        }
        return page;
    });
}

ServerResult<std::optional<StoredArticle>> SqliteArticleStore::article(std::int64_t id) const {
    using Found = std::optional<StoredArticle>;
    return transact<Found>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<Found> {
        SqliteStatement row =
            connection.prepare("SELECT a.id, a.author_id, u.name, a.title, a.text, a.modified, a.open_comment, "
                               "(SELECT COUNT(*) FROM likes l WHERE l.article_id = a.id), "
                               "(SELECT COUNT(*) FROM comments c WHERE c.article_id = a.id) "
                               "FROM articles a JOIN users u ON u.id = a.author_id WHERE a.id = ?",
                               id);
        if (!row.step()) {
            if (row.failed()) return connection.failure();
            return Found();
        }
        Found found(articleOf(row));
        if (!readMedia(connection, *found)) return connection.failure();
        return found;
    });
}

ServerResult<std::vector<std::string>> SqliteArticleStore::removeArticle(std::int64_t id, std::int64_t user) {
    using Names = std::vector<std::string>;
    return transact<Names>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<Names> {
        SqliteStatement owner = connection.prepare("SELECT author_id FROM articles WHERE id = ?", id);
        if (!owner.step()) return owner.failed() ? connection.failure() : noArticle();
        if (owner.integer(0) != user) {
            return ServerFailure{ServerFault::forbidden, "Only its author can remove an article."};
        }
        Names names;
        SqliteStatement media = connection.prepare("SELECT file, thumbnail FROM images WHERE article_id = ? "
                                                   "UNION ALL SELECT file, thumbnail FROM videos WHERE article_id = ?",
                                                   id, id);
        while (media.step()) {
            names.push_back(media.text(0));
            names.push_back(media.text(1));
        }
        // SQLite removes the images, videos, comments and likes of the article, too (ON DELETE CASCADE).
        if (media.failed() || !connection.prepare("DELETE FROM articles WHERE id = ?", id).run()) {
            return connection.failure();
        }
        return names;
    });
}

ServerResult<std::int64_t> SqliteArticleStore::likeArticle(std::int64_t id, std::string_view liker) {
    return transact<std::int64_t>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<std::int64_t> {
        SqliteStatement exists = connection.prepare("SELECT 1 FROM articles WHERE id = ?", id);
        if (!exists.step()) return exists.failed() ? connection.failure() : noArticle();
        SqliteStatement liked = connection.prepare("SELECT 1 FROM likes WHERE article_id = ? AND liker = ?", id, liker);
        bool isNew = !liked.step();
        if (liked.failed() || (isNew && !insertLike(connection, id, liker))) return connection.failure();
        return numberOf(connection, connection.prepare("SELECT COUNT(*) FROM likes WHERE article_id = ?", id));
    });
}

ServerResult<bool> SqliteArticleStore::isEmpty() const {
    return transact<bool>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<bool> {
        auto count = numberOf(connection, connection.prepare("SELECT COUNT(*) FROM users"));
        if (!count) return count.failure();
        return *count == 0;
    });
}

ServerResult<void> SqliteArticleStore::importInto(const ImportedContent& content) {
    return transact<void>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<void> {
        auto users = numberOf(connection, connection.prepare("SELECT COUNT(*) FROM users"));
        if (!users) return users.failure();
        if (*users != 0) return ServerFailure{ServerFault::conflict, "The database is not empty."};

        std::vector<std::int64_t> ids;
        for (const StoredUser& user : content.users) {
            auto id = insertUser(connection, user, content.date);
            if (!id) return id.failure();
            ids.push_back(*id);
        }
        for (const ImportedArticle& imported : content.articles) {
            StoredArticle article = imported.article;
            article.authorId = ids.at(static_cast<std::size_t>(article.authorId));
            auto id = insertArticle(connection, article);
            if (!id) return id.failure();
            for (const StoredComment& comment : imported.comments) {
                std::int64_t author = ids.at(static_cast<std::size_t>(comment.authorId));
                if (!insertComment(connection, *id, author, comment.text, comment.date)) {
                    return connection.failure();
                }
            }
            for (const std::string& liker : imported.likers) {
                if (!insertLike(connection, *id, liker)) return connection.failure();
            }
        }
        for (const StoredNotification& imported : content.notifications) {
            StoredNotification notification = imported;
            notification.senderId = ids.at(static_cast<std::size_t>(imported.senderId));
            notification.recipientId = ids.at(static_cast<std::size_t>(imported.recipientId));
            if (!insertNotification(connection, notification)) return connection.failure();
        }
        return {};
    });
}

ServerResult<std::vector<std::string>> SqliteArticleStore::mediaNames() const {
    using Names = std::vector<std::string>;
    return transact<Names>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<Names> {
        Names names;
        SqliteStatement row =
            connection.prepare("SELECT avatar FROM users WHERE avatar <> '' "
                               "UNION ALL SELECT file FROM images UNION ALL SELECT thumbnail FROM images "
                               "UNION ALL SELECT file FROM videos UNION ALL SELECT thumbnail FROM videos");
        while (row.step()) names.push_back(row.text(0));
        if (row.failed()) return connection.failure();
        return names;
    });
}

}  // namespace articleserver
