#include "article/detail/DetailMetrics.h"
#include "tests/article/detail/ArticleDetailTest.h"

#include <chrono>

namespace ostrel {
namespace {

TEST_F(ArticleDetailTest, HostileRecordsAreShownWithoutHarm) {
    showDetail();
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::mac}) {
        useIdiom(idiom);
        for (const std::string& element : hostileElements()) {
            server->answer(R"({"id":42,"title":)" + element + R"(,"text":)" + element + R"(,"url":)" + element +
                           R"(,"auth_id":)" + element + R"(,"images":[)" + element + R"(],"videos":[)" + element + "," +
                           element + R"(],"comments":[)" + element + "]}");
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
            if (const auto sheet = detail->presentedViewController()) sheet->dismissViewControllerAnimated(false);
            platform.advance(0.5);
            for (const std::string& url : server->mediaUrls()) server->answerMedia(url, Data::copy("<html>404"));
            EXPECT_TRUE(NSThread::waitForAll(10));
            platform.advance(0.5);
            for (std::int64_t section = 0; section < 5; ++section) {
                const CGFloat height = table().rectForRowAtIndexPath({section, 0}).height();
                EXPECT_TRUE(height > 0 && height < largestPictureHeight + 100) << section << element;
            }
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
        R"(],"videos":[)" + repeated(50, R"({"video":"https://h/v.mp4","thumbnail":"http://h/t","video_width":1920,
                                 "video_height":1080,"duration":9})") +
        R"(],"comments":[)" +
        repeated(5000, R"({"auth_name":"Ada","auth_id":3,"date":"2027-01-15T07:00:00Z","text":"Fine."})") + "]}");
    EXPECT_EQ(rowCounts(), (std::vector<std::int64_t>{1, 1, 500, 50, 5000}));
    // The headless metrics give every row the same height, so that the whole length is known beforehand.
    std::size_t most = 0, screens = 0, pictures = 0;
    for (CGFloat last = -1; table().contentOffset().y > last && screens < 2000; ++screens) {
        last = table().contentOffset().y;
        most = std::max(most, table().liveCellCount());
        table().setContentOffset({0, std::min(last + 600, table().maximumOffsetY())});
        platform.settle();
        if (screens % 50 == 0) {
            for (const std::string& url : server->mediaUrls()) {
                server->answerMedia(url, picture());
                ++pictures;
            }
            const auto shown = table().cellForRowAtIndexPath(table().indexPathsForVisibleRows().back());
            ASSERT_NE(shown, nullptr) << "the viewport is never empty";
        }
    }
    EXPECT_GT(screens, 500u);
    EXPECT_GE(pictures, 1050u) << "every picture's two requests, and every video's thumbnail";
    EXPECT_NE(row<UIArticleCommentViewTableViewCell>(4, 4999), nullptr) << "the end was reached";
    EXPECT_LE(most, 32u + UITableView::reusePoolLimit);
    EXPECT_LE(NSThread::runningCount(), 64);
}

TEST_F(ArticleDetailTest, AnEndlesslyLongTextIsShown) {
    const auto begin = std::chrono::steady_clock::now();
    showArticle(R"({"id":42,"title":")" + std::string(20'000, 'W') + R"(","text":")" + std::string(1'000'000, 'x') +
                R"(","images":[{"text":")" + std::string(50'000, 'y') + R"("}],"comments":[{"text":")" +
                std::string(50'000, 'z') + R"("}]})");
    for (int i = 0; i < 20; ++i) {
        const CGFloat before = table().contentOffset().y;
        EXPECT_TRUE(platform.key(i % 2 == 0 ? UIKeyCode::pageDown : UIKeyCode::space));
        platform.advance(0.5);
        EXPECT_GT(table().contentOffset().y, before) << "keys scroll when nothing has the focus";
    }
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

}  // namespace
}  // namespace ostrel
