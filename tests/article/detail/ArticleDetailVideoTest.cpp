#include "tests/article/detail/ArticleDetailTest.h"

namespace ostrel {
namespace {

/// Several videos in one detail screen.
class ArticleDetailPlayTest : public ArticleDetailTest {
protected:
    /// The numbers of the video rows that exist as views and play.
    std::vector<std::int64_t> playing() {
        std::vector<std::int64_t> rows;
        for (std::int64_t i = 0; i < table().numberOfRowsInSection(3); ++i) {
            const auto shown = video(i);
            if (shown && shown->player() && shown->player()->timeControlStatus() != AVPlayerTimeControlStatus::paused) {
                rows.push_back(i);
            }
        }
        return rows;
    }
    void play(std::int64_t index) {
        tap(video(index));
        if (players.last().currentStatus == AVPlayerStatus::unknown)
            players.last().becomeReady(CMTimeMake(65 * 600, 600));
    }
    using Rows = std::vector<std::int64_t>;
};

TEST_F(ArticleDetailPlayTest, OneVideoPlaysAtATime) {
    showArticle(articleWithVideos(4));
    play(0);
    EXPECT_EQ(playing(), Rows{0});
    play(2);
    EXPECT_EQ(playing(), Rows{2});
    EXPECT_EQ(video(0)->stateImageView()->alpha(), 1);
    play(2);
    EXPECT_EQ(playing(), Rows{}) << "the second tap pauses";
    play(0);
    EXPECT_EQ(playing(), Rows{0}) << "where it was paused";
    EXPECT_EQ(players.urls().size(), 2u) << "a row keeps its player";
    EXPECT_EQ(players.alive(), 2u) << "and rows that never played have none";
    detail->stopPlayedVideoExcept(0);
    EXPECT_EQ(playing(), Rows{0});
    detail->stopPlayedVideoExcept(-1);
    EXPECT_EQ(playing(), Rows{});

    play(1);
    navigation->pushViewController(make<UIViewController>(), true);
    platform.advance(1);
    EXPECT_EQ(players.playing(), 0u) << "nothing sounds behind another screen";
    navigation->popViewControllerAnimated(true);
    platform.advance(1);
    EXPECT_EQ(playing(), Rows{}) << "nor begins again by itself";
    play(1);
    EXPECT_EQ(playing(), Rows{1});
}

TEST_F(ArticleDetailPlayTest, ADownloadThatEndsAfterAnotherVideoWasChosenStaysSilent) {
    useIdiom(UIUserInterfaceIdiom::mac);
    showArticle(articleWithVideos(3));
    const auto answer = [&](const char* url) {
        server->answerMedia(url, Data::copy("video"));
        EXPECT_TRUE(NSThread::waitForAll(10));
        platform.settle();
    };
    tap(video(0));
    tap(video(1));
    answer("https://example.org/0.mp4");
    EXPECT_EQ(playing(), Rows{});
    answer("https://example.org/1.mp4");
    EXPECT_EQ(playing(), Rows{1});
    tap(video(2));
    navigation->popViewControllerAnimated(true);
    answer("https://example.org/2.mp4");
    platform.advance(1);
    EXPECT_EQ(players.playing(), 0u) << "the screen has left";
}

TEST_F(ArticleDetailPlayTest, TheSpaceBarPlaysTheSelectedVideo) {
    showArticle(articleWithVideos(2));
    play(0);
    EXPECT_TRUE(platform.key(UIKeyCode::space));
    EXPECT_EQ(playing(), Rows{});
    EXPECT_TRUE(platform.key(UIKeyCode::space));
    EXPECT_EQ(playing(), Rows{0});
    platform.window().setFocusedView(nullptr, false);
    EXPECT_TRUE(platform.key(UIKeyCode::space));
    EXPECT_EQ(playing(), Rows{}) << "also when nothing has the focus";
    EXPECT_EQ(table().contentOffset().y, 0) << "it does not scroll";

    platform.window().setFocusedView(video(1).get(), true);
    EXPECT_TRUE(platform.key(UIKeyCode::space));
    players.last().becomeReady(CMTimeMake(600, 600));
    EXPECT_EQ(playing(), Rows{1}) << "the focused row comes before the selected one";
    platform.window().sendKey({.key = {.code = UIKeyCode::space}, .isRepeat = true, .timestamp = 0});
    EXPECT_EQ(playing(), Rows{1}) << "a key that is held does it once";
    platform.window().setFocusedView(table().cellForRowAtIndexPath({0, 0}).get(), true);
    EXPECT_TRUE(platform.key(UIKeyCode::space));
    EXPECT_EQ(playing(), Rows{}) << "with the focus on another row the selected one is meant";
    tap(table().cellForRowAtIndexPath({0, 0}));
    EXPECT_FALSE(platform.key(UIKeyCode::space)) << "no video is selected, and there is nothing to scroll";
}

TEST_F(ArticleDetailPlayTest, AVideoGoesOnInATurnedWindowAndOutsideTheViewport) {
    showArticle(articleWithVideos(12));
    play(1);
    const auto player = video(1)->player();
    platform.window().setSize({667, 375});
    platform.advance(0.5);
    table().scrollToRowAtIndexPath({3, 1}, false);
    platform.settle();
    ASSERT_NE(video(1), nullptr);
    EXPECT_EQ(video(1)->player(), player);
    EXPECT_EQ(video(1)->playLayer()->frame(), CGRect({0, 0}, video(1)->thumbnailImageView()->frame().size));
    EXPECT_EQ(playing(), Rows{1});

    const ViewTag layer = video(1)->playLayer()->tag();
    const auto* node = platform.backend().node(layer);
    ASSERT_NE(node, nullptr);
    EXPECT_NE(std::get_if<PlayerContent>(&node->state->content), nullptr);
    table().scrollToRowAtIndexPath({3, 11}, false);
    platform.settle();
    EXPECT_EQ(platform.backend().node(layer), nullptr) << "outside the viewport no frames are shown";
    EXPECT_EQ(players.playing(), 1u);
}

TEST_F(ArticleDetailPlayTest, OtherRowsDoNothingWhenTheyAreTapped) {
    showArticle(R"({"id":42,"title":"t","text":"x","images":[{"image_width":40,"image_height":10}],
                    "comments":[{"auth_name":"Ada","text":"Fine."}]})");
    tap(table().cellForRowAtIndexPath({2, 0}));
    EXPECT_EQ(logged(), Lines{"TODO open image."});
    for (const NSIndexPath path : {NSIndexPath{0, 0}, NSIndexPath{1, 0}, NSIndexPath{4, 0}})
        tap(table().cellForRowAtIndexPath(path));
    EXPECT_EQ(logged(), Lines{});
    EXPECT_TRUE(players.urls().empty());
}

}  // namespace
}  // namespace ostrel
