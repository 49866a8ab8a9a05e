#include "articleserver/common/ServerLimits.h"
#include "articleserver/store/SqliteArticleStore.h"
#include "articleserver/store/SqliteParts.h"

#include <algorithm>
#include <limits>

namespace articleserver {

namespace {

using Kind = SqliteTransaction::Kind;

/// The greatest id that a page may have whose ids are below `before`.
std::int64_t newestOf(const std::optional<std::int64_t>& before) {
    return before ? *before - 1 : std::numeric_limits<std::int64_t>::max();
}

ServerResult<std::int64_t> unreadOf(SqliteConnection& connection, std::int64_t recipient) {
    return numberOf(
        connection,
        connection.prepare("SELECT COUNT(*) FROM notifications WHERE recipient_id = ? AND is_read = 0", recipient));
}

}  // namespace

ServerFailure noArticle() { return {ServerFault::notFound, "There is no such article."}; }

ServerResult<std::int64_t> numberOf(SqliteConnection& connection, SqliteStatement statement) {
    if (!statement.step()) return connection.failure();
    return statement.integer(0);
}

bool insertComment(SqliteConnection& connection, std::int64_t article, std::int64_t author, std::string_view text,
                   ServerTime date) {
    return connection
        .prepare("INSERT INTO comments (article_id, author_id, created, text) VALUES (?, ?, ?, ?)", article, author,
                 date, text)
        .run();
}

bool insertNotification(SqliteConnection& connection, const StoredNotification& notification) {
    return connection
        .prepare("INSERT INTO notifications (recipient_id, sender_id, created, title, text, is_read) "
                 "VALUES (?, ?, ?, ?, ?, ?)",
                 notification.recipientId, notification.senderId, notification.date, notification.title,
                 notification.text, notification.isRead)
        .run();
}

ServerResult<std::int64_t> SqliteArticleStore::addComment(std::int64_t article, std::int64_t author,
                                                          std::string_view text, ServerTime now) {
    return transact<std::int64_t>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<std::int64_t> {
        SqliteStatement open = connection.prepare("SELECT open_comment FROM articles WHERE id = ?", article);
        if (!open.step()) return open.failed() ? connection.failure() : noArticle();
        if (open.integer(0) == 0) {
            return ServerFailure{ServerFault::forbidden, "Comments on this article are closed."};
        }
        if (!insertComment(connection, article, author, text, now)) return connection.failure();
        return numberOf(connection, connection.prepare("SELECT COUNT(*) FROM comments WHERE article_id = ?", article));
    });
}

ServerResult<CommentPage> SqliteArticleStore::comments(const CommentQuery& query) const {
    return transact<CommentPage>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<CommentPage> {
        CommentPage page;
        SqliteStatement row =
            connection.prepare("SELECT c.id, c.author_id, u.name, c.created, c.text FROM comments c "
                               "JOIN users u ON u.id = c.author_id WHERE c.article_id = ? AND c.id <= ? "
                               "ORDER BY c.id DESC LIMIT ?",
                               query.article, newestOf(query.before), query.limit + 1);
        std::size_t bytes = 0;
        while (row.step()) {
            bool isFull = page.comments.size() == static_cast<std::size_t>(query.limit) || bytes > query.maximumBytes;
            if (isFull) {
                page.hasMore = true;
                break;
            }
            page.comments.push_back({row.integer(0), row.integer(1), row.text(2), row.integer(3), row.text(4)});
            bytes += page.comments.back().text.size();
        }
        if (row.failed()) return connection.failure();
        std::reverse(page.comments.begin(), page.comments.end());
        return page;
    });
}

ServerResult<std::int64_t> SqliteArticleStore::addNotification(const StoredNotification& notification) {
    const std::int64_t recipient = notification.recipientId;
    return transact<std::int64_t>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<std::int64_t> {
        SqliteStatement exists = connection.prepare("SELECT 1 FROM users WHERE id = ?", recipient);
        if (!exists.step()) {
            if (exists.failed()) return connection.failure();
            return ServerFailure{ServerFault::notFound, "There is no such user."};
        }
        bool isDone = insertNotification(connection, notification) &&
                      connection
                          .prepare("DELETE FROM notifications WHERE recipient_id = ? AND id NOT IN (SELECT id FROM "
                                   "notifications WHERE recipient_id = ? ORDER BY id DESC LIMIT ?)",
                                   recipient, recipient, ServerLimits::notificationsPerUser)
                          .run();
        if (!isDone) return connection.failure();
        return numberOf(connection,
                        connection.prepare("SELECT MAX(id) FROM notifications WHERE recipient_id = ?", recipient));
    });
}

ServerResult<NotificationPage> SqliteArticleStore::notifications(std::int64_t recipient,
                                                                 std::optional<std::int64_t> before, int limit) const {
    return transact<NotificationPage>(Kind::read, [&](SqliteConnection& connection) -> ServerResult<NotificationPage> {
        auto unread = unreadOf(connection, recipient);
        if (!unread) return unread.failure();
        NotificationPage page;
        page.unread = *unread;
        SqliteStatement row =
            connection.prepare("SELECT n.id, n.sender_id, u.name, n.recipient_id, n.created, n.title, "
                               "n.text, n.is_read FROM notifications n JOIN users u ON u.id = n.sender_id "
                               "WHERE n.recipient_id = ? AND n.id <= ? ORDER BY n.id DESC LIMIT ?",
                               recipient, newestOf(before), limit + 1);
        while (row.step()) {
            page.notifications.push_back({row.integer(0), row.integer(1), row.text(2), row.integer(3), row.integer(4),
                                          row.text(5), row.text(6), row.integer(7) != 0});
        }
        if (row.failed()) return connection.failure();
        page.hasMore = page.notifications.size() > static_cast<std::size_t>(limit);
        if (page.hasMore) page.notifications.pop_back();
        return page;
    });
}

ServerResult<std::int64_t> SqliteArticleStore::markNotificationsRead(std::int64_t recipient, std::int64_t upTo) {
    return transact<std::int64_t>(Kind::write, [&](SqliteConnection& connection) -> ServerResult<std::int64_t> {
        bool isDone = connection
                          .prepare("UPDATE notifications SET is_read = 1 WHERE recipient_id = ? AND "
                                   "id <= ? AND is_read = 0",
                                   recipient, upTo)
                          .run();
        if (!isDone) return connection.failure();
        return unreadOf(connection, recipient);
    });
}

}  // namespace articleserver
