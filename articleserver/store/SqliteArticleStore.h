#pragma once

#include "articleserver/store/ArticleStore.h"
#include "articleserver/store/SqliteConnection.h"

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace articleserver {

/// The article store in one SQLite 3 file. Any thread may call it. Each operation borrows a connection from a
/// pool: readers run in parallel (write-ahead log), and the mutex writing_ admits one writer at a time.
class SqliteArticleStore final : public ArticleStore {
public:
    /// Opens or creates the file and migrates its schema to the newest version (user_version). Refuses a file
    /// whose schema is newer than this server.
    static ServerResult<std::unique_ptr<SqliteArticleStore>> open(const std::string& file);

    ServerResult<std::int64_t> addUser(const StoredUser& user, ServerTime now) override;
    ServerResult<std::optional<StoredUser>> userNamed(std::string_view name) const override;
    ServerResult<std::optional<StoredUser>> user(std::int64_t id) const override;
    ServerResult<std::string> setAvatar(std::int64_t user, std::string_view mediaName) override;

    ServerResult<void> addSession(std::int64_t user, std::string_view tokenHash, ServerTime expires,
                                  ServerTime now) override;
    ServerResult<std::optional<StoredSession>> session(std::string_view tokenHash, ServerTime now) const override;
    ServerResult<void> extendSession(std::string_view tokenHash, ServerTime expires) override;
    ServerResult<void> removeSession(std::string_view tokenHash) override;

    ServerResult<std::int64_t> addArticle(const StoredArticle& article) override;
    ServerResult<ArticlePage> articles(const ArticlePageQuery& query) const override;
    ServerResult<std::optional<StoredArticle>> article(std::int64_t id) const override;
    ServerResult<std::vector<std::string>> removeArticle(std::int64_t id, std::int64_t user) override;
    ServerResult<PublishedId> createArticle(const PublishRequest& request, const StoredArticle& article) override;
    ServerResult<void> updateArticle(std::int64_t id, const PublishRequest& request, std::string_view title,
                                     std::string_view text) override;
    ServerResult<void> checkAuthor(std::int64_t article, std::int64_t user) const override;
    ServerResult<PublishedId> addImage(const PublishRequest& request, const MediumPlace& place,
                                       const StoredImage& image) override;
    ServerResult<PublishedId> addVideo(const PublishRequest& request, const MediumPlace& place,
                                       const StoredVideo& video) override;
    ServerResult<void> changeMedium(MediumKind kind, std::int64_t id, const PublishRequest& request,
                                    const MediumChange& change) override;
    ServerResult<std::vector<std::string>> removeMedium(MediumKind kind, std::int64_t id,
                                                        const PublishRequest& request) override;

    ServerResult<std::int64_t> likeArticle(std::int64_t id, std::string_view liker) override;
    ServerResult<std::int64_t> addComment(std::int64_t article, std::int64_t author, std::string_view text,
                                          ServerTime now) override;
    ServerResult<CommentPage> comments(const CommentQuery& query) const override;

    ServerResult<std::int64_t> addNotification(const StoredNotification& notification) override;
    ServerResult<NotificationPage> notifications(std::int64_t recipient, std::optional<std::int64_t> before,
                                                 int limit) const override;
    ServerResult<std::int64_t> markNotificationsRead(std::int64_t recipient, std::int64_t upTo) override;

    ServerResult<bool> isEmpty() const override;
    ServerResult<void> importInto(const ImportedContent& content) override;
    ServerResult<std::vector<std::string>> mediaNames() const override;

private:
    explicit SqliteArticleStore(std::string file) : file_(std::move(file)) {}

    /// Runs `work` with a connection inside a transaction. A failure of `work` rolls the transaction back.
    template <typename T>
    ServerResult<T> transact(SqliteTransaction::Kind kind,
                             const std::function<ServerResult<T>(SqliteConnection&)>& work) const;
    ServerResult<std::unique_ptr<SqliteConnection>> borrow() const;
    void giveBack(std::unique_ptr<SqliteConnection> connection) const;

    std::string file_;
    mutable std::mutex idleMutex_;
    mutable std::vector<std::unique_ptr<SqliteConnection>> idle_;  ///< guarded by idleMutex_
    mutable std::mutex writing_;
};

template <typename T>
ServerResult<T> SqliteArticleStore::transact(SqliteTransaction::Kind kind,
                                             const std::function<ServerResult<T>(SqliteConnection&)>& work) const {
    std::unique_lock<std::mutex> writing(writing_, std::defer_lock);
    if (kind == SqliteTransaction::Kind::write) writing.lock();
    auto connection = borrow();
    if (!connection) return connection.failure();
    ServerResult<T> result = [&]() -> ServerResult<T> {
        SqliteTransaction transaction(**connection, kind);
        if (!transaction.isOpen()) return (*connection)->failure();
        ServerResult<T> done = work(**connection);
        if (done && !transaction.commit()) return (*connection)->failure();
        return done;
    }();
    giveBack(std::move(*connection));
    return result;
}

}  // namespace articleserver
