#include "platform/uikit/screens/UIAlertController.h"
#include "tests/article/detail/ArticleDetailTest.h"

#include <chrono>

namespace ostrel {
namespace {

TEST_F(ArticleDetailTest, HostileRecordsAreShownWithoutHarm) {
    showDetail();
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::mac}) {
        useIdiom(idiom);
        for (const std::string& element : hostileElements()) {
            server->answer(R"({"id":42,"title":)" + element + R"(,"text":)" + element + R"(,"url":)" +
                           element + R"(,"auth_id":)" + element + R"(,"images":[)" + element +
                           R"(],"videos":[)" + element + "," + element + R"(],"comments":[)" + element +
                           "]}");
            platform.advance(1);
            EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 1, 2, 1})) << element;
            for (std::int64_t i = 0; i < 2; ++i) {
                table().scrollToRowAtIndexPath({3, i}, false);
                platform.settle();
                ASSERT_NE(video(i), nullptr);
                detail->tableViewDidSelectRowAtIndexPath(table(), {3, i});
                platform.advance(0.5);
            }
            table().scrollToRowAtIndexPath({4, 0}, false);
            platform.settle();
            detail->share();
            platform.advance(0.5);
            if (const auto sheet = detail->presentedViewController())
                sheet->dismissViewControllerAnimated(false);
            platform.advance(0.5);
            for (const std::string& url : server->mediaUrls())
                server->answerMedia(url, Data::copy("<html>404"));
            EXPECT_TRUE(NSThread::waitForAll(10));
            platform.advance(0.5);
            for (std::int64_t section = 0; section < 5; ++section)
                EXPECT_TRUE(std::isfinite(table().rectForRowAtIndexPath({section, 0}).height())) << element;
            detail->openArticleID("42", "", "");
        }
    }
    for (const char* lists : {R"("images":{},"videos":"x","comments":7)", R"("images":null,"videos":true)"}) {
        server->answer(R"({"id":42,)" + std::string(lists) + "}");
        platform.advance(1);
        EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 0, 0, 0})) << lists;
        detail->openArticleID("42", "", "");
    }
}

TEST_F(ArticleDetailTest, AMessageGoesToWhateverTheRecordHasForAnAuthor) {
    for (const char* article : {"{}", R"({"auth_id":null})", R"({"auth_id":[1]})", R"({"auth_id":-1})"}) {
        showArticle(article);
        detail->touchAuthor();
        platform.advance(1);
        EXPECT_TRUE(platform.tapText("Touch"));
        platform.advance(1);
        ASSERT_EQ(server->messages.size(), 1u) << article;
        EXPECT_EQ(server->messages[0].userId, record(article)["auth_id"]) << article;
        server->messages.clear();
    }
}

std::string repeated(int count, const std::string& element) {
    std::string list;
    for (int i = 0; i < count; ++i) list += (i ? "," : "") + element;
    return list;
}

TEST_F(ArticleDetailTest, AVeryLargeArticleIsScrolledThroughWithFewRows) {
    showArticle(
        R"({"id":42,"title":"Much","text":"Of everything.","images":[)" +
        repeated(500,
                 R"({"image":"http://h/i","thumbnail":"http://h/t","image_width":4000,"image_height":3000,
                                  "text":"a caption"})") +
        R"(],"videos":[)" +
        repeated(50, R"({"video":"https://h/v.mp4","thumbnail":"http://h/t","video_width":1920,
                                 "video_height":1080,"duration":9})") +
        R"(],"comments":[)" +
        repeated(5000, R"({"auth_name":"Ada","auth_id":3,"date":"2027-01-15T07:00:00Z","text":"Fine."})") +
        "]}");
    EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 500, 50, 5000}));
    // The headless metrics give every row the same height, so that the whole length is known beforehand.
    std::size_t most = 0, screens = 0;
    for (CGFloat last = -1; table().contentOffset().y > last && screens < 2000; ++screens) {
        last = table().contentOffset().y;
        most = std::max(most, table().liveCellCount());
        table().setContentOffset({0, std::min(last + 600, table().maximumOffsetY())});
        platform.settle();
        if (screens % 50 == 0 && table().numberOfSections() == 5) {
            for (const std::string& url : server->mediaUrls()) server->answerMedia(url, picture());
        }
    }
    EXPECT_GT(screens, 500u);
    EXPECT_NE(row<UIArticleCommentViewTableViewCell>(4, 4999), nullptr) << "the end was reached";
    EXPECT_LE(most, 32u + UITableView::reusePoolLimit);
    EXPECT_LE(NSThread::runningCount(), 64);
}

TEST_F(ArticleDetailTest, AnEndlesslyLongTextIsShown) {
    const auto begin = std::chrono::steady_clock::now();
    showArticle(R"({"id":42,"title":")" + std::string(20'000, 'W') + R"(","text":")" +
                std::string(1'000'000, 'x') + R"(","images":[{"text":")" + std::string(50'000, 'y') +
                R"("}],"comments":[{"text":")" + std::string(50'000, 'z') + R"("}]})");
    for (int i = 0; i < 20; ++i) platform.key(UIKeyCode::pageDown), platform.advance(0.5);
    EXPECT_GT(table().contentOffset().y, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

}  // namespace
}  // namespace ostrel
