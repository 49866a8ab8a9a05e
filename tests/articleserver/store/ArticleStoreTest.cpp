#include "tests/articleserver/ServerFixture.h"

#include "articleserver/store/SqliteArticleStore.h"

#include <sqlite3.h>

#include <thread>

namespace articleserver {

namespace {

class ArticleStoreTest : public testing::Test {
protected:
    void SetUp() override { open(); }

    void open() {
        store_.reset();
        auto opened = SqliteArticleStore::open(file());
        ASSERT_TRUE(opened) << opened.failure().text;
        store_ = std::move(*opened);
    }

    std::string file() const { return folder_.path("store.sqlite"); }

    /// The single number of a query over a connection of its own.
    int number(const std::string& sql) {
        sqlite3* database = nullptr;
        sqlite3_open(file().c_str(), &database);
        int value = -1;
        auto read = [](void* to, int, char** values, char**) {
            *static_cast<int*>(to) = std::atoi(values[0]);
            return 0;
        };
        sqlite3_exec(database, sql.c_str(), read, &value, nullptr);
        sqlite3_close(database);
        return value;
    }

    std::int64_t addUser(const std::string& name) {
        auto id = store_->addUser({0, name, "hash", ""}, 0);
        EXPECT_TRUE(id);
        return *id;
    }

    std::int64_t addArticle(std::int64_t author) {
        StoredArticle article;
        article.authorId = author;
        const std::string key = std::to_string(++files_);
        article.images = {{0, "f" + key, "t" + key, 3, 4, "one"}, {0, "g" + key, "u" + key, 5, 6, "two"}};
        article.videos = {{0, "h" + key, "v" + key, 7, 8, 1.5, "video"}};
        auto id = store_->addArticle(article);
        EXPECT_TRUE(id);
        return *id;
    }

    TemporaryFolder folder_;
    std::unique_ptr<SqliteArticleStore> store_;
    int files_ = 0;
};

}  // namespace

TEST_F(ArticleStoreTest, ReopeningKeepsEverythingAndRemovingLeavesNothing) {
    const std::int64_t ada = addUser("Ada"), kept = addArticle(ada), id = addArticle(ada);
    ASSERT_TRUE(store_->addSession(ada, "token", 100, 0));
    for (std::int64_t each : {kept, id}) {
        ASSERT_TRUE(store_->likeArticle(each, "x"));
        ASSERT_TRUE(store_->addComment(each, ada, "hello", 5));
    }
    open();
    const StoredArticle article = store_->article(id)->value();
    EXPECT_EQ(article.authorName, "Ada");
    EXPECT_EQ(article.likes, 1);
    EXPECT_EQ(article.comments, 1);
    EXPECT_EQ(article.images.at(1).text, "two");
    EXPECT_EQ(article.videos.at(0).duration, 1.5);
    EXPECT_EQ(store_->session("token", 99)->value().user.id, ada);
    EXPECT_FALSE(*store_->session("token", 100)) << "expired";

    EXPECT_EQ(store_->removeArticle(id, ada)->size(), 6U);
    EXPECT_EQ(store_->mediaNames()->size(), 6U);
    for (const char* table : {"likes", "comments", "videos"}) {
        EXPECT_EQ(number(std::string("SELECT COUNT(*) FROM ") + table), 1) << table;
    }
    EXPECT_EQ(number("SELECT COUNT(*) FROM images"), 2);
}

TEST_F(ArticleStoreTest, AFailedOperationChangesNothing) {
    std::int64_t ada = addUser("Ada");
    StoredArticle article;
    article.authorId = ada;
    // The second image's file is taken by the first.
    article.images = {{0, "same", "t1", 1, 1, ""}, {0, "same", "t2", 1, 1, ""}};
    EXPECT_EQ(store_->addArticle(article).failure().fault, ServerFault::internal);
    article.images.clear();
    article.authorId = 99;
    EXPECT_FALSE(store_->addArticle(article));
    EXPECT_EQ(number("SELECT COUNT(*) FROM articles"), 0);
    EXPECT_EQ(number("SELECT COUNT(*) FROM images"), 0);
    EXPECT_TRUE(addArticle(ada));
}

TEST_F(ArticleStoreTest, SessionsOfAUserAreBounded) {
    std::int64_t ada = addUser("Ada");
    std::int64_t bo = addUser("Bo");
    ASSERT_TRUE(store_->addSession(bo, "bo", 1000, 0));
    for (int index = 0; index < 40; ++index) {
        ASSERT_TRUE(store_->addSession(ada, "t" + std::to_string(index), 1000 + index, 0));
    }
    EXPECT_EQ(number("SELECT COUNT(*) FROM sessions"), 33);
    EXPECT_FALSE(*store_->session("t7", 0));
    EXPECT_TRUE(*store_->session("t8", 0));
    EXPECT_TRUE(*store_->session("bo", 0));
    // The next session removes the expired sessions of all users.
    ASSERT_TRUE(store_->addSession(ada, "new", 5000, 2000));
    EXPECT_EQ(number("SELECT COUNT(*) FROM sessions"), 1);
}

TEST_F(ArticleStoreTest, WritersAndReadersAtOnceLoseNothing) {
    std::int64_t ada = addUser("Ada");
    std::atomic<int> faults{0};
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([&, thread] {
            for (int count = 0; count < 25; ++count) {
                StoredArticle article;
                article.authorId = ada;
                if (!store_->addArticle(article)) ++faults;
                if (!store_->likeArticle(1, std::to_string(thread * 100 + count)) && count > 0) ++faults;
            }
        });
        threads.emplace_back([&] {
            for (int count = 0; count < 50; ++count) {
                if (!store_->articles({std::nullopt, std::nullopt, 20})) ++faults;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(faults, 0);
    EXPECT_EQ(number("SELECT COUNT(*) FROM articles"), 100);
    EXPECT_GE(number("SELECT COUNT(*) FROM likes"), 96);
}

TEST_F(ArticleStoreTest, CommentPagesEndAtTheirCountOrSize) {
    addUser("Ada");
    std::int64_t article = addArticle(1);
    for (int count = 1; count <= 10; ++count) ASSERT_TRUE(store_->addComment(article, 1, "12345", count));
    struct Case {
        std::optional<std::int64_t> before;
        int limit;
        std::size_t bytes;
        std::vector<std::int64_t> ids;
        bool hasMore;
    };
    for (const Case& tried :
         {Case{std::nullopt, 3, 1000, {8, 9, 10}, true}, Case{8, 3, 1000, {5, 6, 7}, true},
          Case{3, 3, 1000, {1, 2}, false}, Case{4, 3, 1000, {1, 2, 3}, false}, Case{std::nullopt, 9, 9, {9, 10}, true},
          Case{std::nullopt, 9, 0, {10}, true}, Case{1, 9, 9, {}, false}}) {
        auto page = store_->comments({article, tried.before, tried.limit, tried.bytes});
        ASSERT_TRUE(page);
        std::vector<std::int64_t> ids;
        for (const StoredComment& comment : page->comments) ids.push_back(comment.id);
        EXPECT_EQ(ids, tried.ids) << tried.before.value_or(0) << " " << tried.limit;
        EXPECT_EQ(page->hasMore, tried.hasMore);
    }
}

TEST_F(ArticleStoreTest, OnlyTheNewestNotificationsOfARecipientAreKept) {
    ImportedContent content;
    content.users = {{0, "Ada", "", ""}, {0, "Bo", "", ""}};
    for (int count = 0; count < 1000; ++count) content.notifications.push_back({0, 1, "", 0, count, "t", "", false});
    content.notifications.push_back({0, 0, "", 1, 7, "to Bo", "", false});
    ASSERT_TRUE(store_->importInto(content));
    auto id = store_->addNotification({0, 2, "", 1, 5, "newest", "", false});
    ASSERT_TRUE(id);
    auto page = store_->notifications(1, std::nullopt, 2000);
    ASSERT_TRUE(page);
    ASSERT_EQ(page->notifications.size(), 1000U);
    EXPECT_EQ(page->notifications.front().id, *id);
    EXPECT_EQ(page->notifications.back().id, 2);
    EXPECT_EQ(store_->notifications(2, std::nullopt, 9)->notifications.size(), 1U);
    EXPECT_EQ(store_->addNotification({0, 1, "", 99, 0, "t", "", false}).failure().fault, ServerFault::notFound);
}

TEST_F(ArticleStoreTest, AFileOfTheFirstVersionGetsWhatCameLater) {
    addUser("Ada");
    store_.reset();
    number("DROP TABLE notifications; DROP TABLE published_requests; PRAGMA user_version = 1");
    open();
    ASSERT_TRUE(store_->addNotification({0, 1, "", 1, 5, "title", "text", false}));
    EXPECT_EQ(store_->notifications(1, std::nullopt, 9)->notifications.at(0).senderName, "Ada");
}

TEST_F(ArticleStoreTest, FilesOfNewerServersAndOtherFilesAreRefused) {
    store_.reset();
    number("PRAGMA user_version = 1000");
    auto newer = SqliteArticleStore::open(file());
    ASSERT_FALSE(newer);
    EXPECT_NE(newer.failure().text.find("newer version"), std::string::npos);

    EXPECT_FALSE(SqliteArticleStore::open(folder_.write("other", std::string(4000, 'x'))));
}

}  // namespace articleserver
