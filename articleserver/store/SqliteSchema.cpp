#include "articleserver/store/SqliteSchema.h"

#include <array>

namespace articleserver {

namespace {

// Step n migrates a file from version n to n + 1. Nobody edits a step after its release.
// AUTOINCREMENT keeps the id of a removed article from becoming the id of a new one.
constexpr std::array<const char*, 3> migrations = {R"sql(
CREATE TABLE users (
    id            INTEGER PRIMARY KEY AUTOINCREMENT,
    name          TEXT NOT NULL,
    name_key      TEXT NOT NULL UNIQUE,
    password_hash TEXT NOT NULL,
    avatar        TEXT NOT NULL,
    created       INTEGER NOT NULL
);
CREATE TABLE sessions (
    token_hash TEXT NOT NULL PRIMARY KEY,
    user_id    INTEGER NOT NULL REFERENCES users (id) ON DELETE CASCADE,
    expires    INTEGER NOT NULL
);
CREATE INDEX sessions_by_user ON sessions (user_id, expires);
CREATE INDEX sessions_by_expiry ON sessions (expires);
CREATE TABLE articles (
    id           INTEGER PRIMARY KEY AUTOINCREMENT,
    author_id    INTEGER NOT NULL REFERENCES users (id) ON DELETE CASCADE,
    title        TEXT NOT NULL,
    text         TEXT NOT NULL,
    modified     INTEGER NOT NULL,
    open_comment INTEGER NOT NULL
);
CREATE INDEX articles_by_author ON articles (author_id, id);
CREATE TABLE images (
    id         INTEGER PRIMARY KEY AUTOINCREMENT,
    article_id INTEGER NOT NULL REFERENCES articles (id) ON DELETE CASCADE,
    position   INTEGER NOT NULL,
    file       TEXT NOT NULL UNIQUE,
    thumbnail  TEXT NOT NULL UNIQUE,
    width      INTEGER NOT NULL,
    height     INTEGER NOT NULL,
    text       TEXT NOT NULL
);
CREATE INDEX images_by_article ON images (article_id, position, id);
CREATE TABLE videos (
    id         INTEGER PRIMARY KEY AUTOINCREMENT,
    article_id INTEGER NOT NULL REFERENCES articles (id) ON DELETE CASCADE,
    position   INTEGER NOT NULL,
    file       TEXT NOT NULL UNIQUE,
    thumbnail  TEXT NOT NULL UNIQUE,
    width      INTEGER NOT NULL,
    height     INTEGER NOT NULL,
    duration   REAL NOT NULL,
    altitude   TEXT NOT NULL DEFAULT '',
    longitude  TEXT NOT NULL DEFAULT '',
    latitude   TEXT NOT NULL DEFAULT '',
    text       TEXT NOT NULL
);
CREATE INDEX videos_by_article ON videos (article_id, position, id);
CREATE TABLE comments (
    id         INTEGER PRIMARY KEY AUTOINCREMENT,
    article_id INTEGER NOT NULL REFERENCES articles (id) ON DELETE CASCADE,
    author_id  INTEGER NOT NULL REFERENCES users (id) ON DELETE CASCADE,
    created    INTEGER NOT NULL,
    text       TEXT NOT NULL
);
CREATE INDEX comments_by_article ON comments (article_id, id);
CREATE INDEX comments_by_author ON comments (author_id);
CREATE TABLE likes (
    article_id INTEGER NOT NULL REFERENCES articles (id) ON DELETE CASCADE,
    liker      TEXT NOT NULL,
    PRIMARY KEY (article_id, liker)
);
)sql",
                                                   R"sql(
CREATE TABLE notifications (
    id           INTEGER PRIMARY KEY AUTOINCREMENT,
    recipient_id INTEGER NOT NULL REFERENCES users (id) ON DELETE CASCADE,
    sender_id    INTEGER NOT NULL REFERENCES users (id) ON DELETE CASCADE,
    created      INTEGER NOT NULL,
    title        TEXT NOT NULL,
    text         TEXT NOT NULL,
    is_read      INTEGER NOT NULL
);
CREATE INDEX notifications_by_recipient ON notifications (recipient_id, id);
CREATE INDEX notifications_unread ON notifications (recipient_id, is_read);
CREATE INDEX notifications_by_sender ON notifications (sender_id);
)sql",
                                                   R"sql(
CREATE TABLE published_requests (
    user_id     INTEGER NOT NULL REFERENCES users (id) ON DELETE CASCADE,
    request_key TEXT NOT NULL,
    made_id     INTEGER NOT NULL,
    published   INTEGER NOT NULL,
    PRIMARY KEY (user_id, request_key)
);
CREATE INDEX published_requests_by_time ON published_requests (published);
)sql"};

}  // namespace

ServerResult<void> migrateSchema(SqliteConnection& connection) {
    SqliteTransaction transaction(connection, SqliteTransaction::Kind::write);
    if (!transaction.isOpen()) return connection.failure();
    std::size_t version = 0;
    {
        SqliteStatement reading = connection.prepare("PRAGMA user_version");
        if (reading.step()) version = static_cast<std::size_t>(reading.integer(0));
        if (reading.failed()) return connection.failure();
    }
    if (version > migrations.size()) {
        return ServerFailure{ServerFault::internal, "The database was written by a newer version."};
    }
    for (; version < migrations.size(); ++version) {
        std::string step = migrations[version];
        step += "PRAGMA user_version = " + std::to_string(version + 1) + ";";
        if (!connection.run(step)) return connection.failure();
    }
    if (!transaction.commit()) return connection.failure();
    return {};
}

}  // namespace articleserver
