#include "article/detail/DetailMetrics.h"
#include "article/detail/VideoFile.h"
#include "article/records/ArticleNotifications.h"
#include "platform/uikit/controls/UIVisualEffectView.h"
#include "tests/article/detail/ArticleDetailTest.h"

namespace ostrel {
namespace {

using VideoRow = UIArticleVideoTableViewCell;

class ArticleVideoRowTest : public ArticleDetailTest {
protected:
    ArticleVideoRowTest() {
        platform.window().setSize({1010, 700});
        auto root = make<UIViewController>();
        root->view()->addSubview(row);
        show(root);
        row->setFrame({0, 100, 1010, 600});
    }
    static std::string videoRecord(const std::string& address, const std::string& more = {}) {
        return R"({"video":")" + address +
               R"(","thumbnail":"http://h/t","video_width":1920,"video_height":1080,"duration":65)" + more + "}";
    }
    void showVideo(const std::string& address) {
        row->setVideoDictionary(record(videoRecord(address)));
        row->setFrame(row->frame());
        platform.settle();
    }
    /// Waits until the downloaded file is written, and lets the main thread play it.
    void finishWriting() {
        EXPECT_TRUE(NSThread::waitForAll(10));
        platform.settle();
    }

    const std::shared_ptr<VideoRow> row = make<VideoRow>(UITableViewCellStyle::defaultStyle, "video");
};

constexpr char remote[] = "https://example.org/a.mp4", local[] = "http://192.168.1.4/a.mp4";

TEST_F(ArticleVideoRowTest, PartsAreBuiltAndPlacedByTheThumbnail) {
    EXPECT_EQ(row->durationLabel()->font(), UIFont::fontWithName("Courier-Bold", 20));
    EXPECT_EQ(row->durationLabel()->textAlignment(), NSTextAlignment::right);
    EXPECT_EQ(row->myTextView()->font(), UIFont::fontWithName("PingFangSC-Light", 12));
    EXPECT_EQ(row->actView()->frame().size, (CGSize{120, 120}));
    ASSERT_NE(row->stateImageView()->image(), nullptr);
    EXPECT_EQ(row->stateImageView()->frame().size, row->stateImageView()->image()->size());
    ASSERT_EQ(row->maskImageView()->subviews().size(), 1u);
    const auto blur = std::dynamic_pointer_cast<UIVisualEffectView>(row->maskImageView()->subviews()[0]);
    ASSERT_NE(blur, nullptr);

    for (const std::string& caption : {std::string("the brook"), std::string()}) {
        row->setVideoDictionary(record(videoRecord(remote, R"(,"text":")" + caption + "\"")));
        row->setFrame({0, 100, 1010, caption.empty() ? 600.0 : 610.0});
        EXPECT_EQ(row->durationLabel()->text(), "1:05");
        EXPECT_EQ(row->durationLabel()->frame().maxY(), 562.5 - 6) << "24 high, 30 above the lower edge";
        EXPECT_EQ(row->durationLabel()->frame().maxX(), 1000 - 20);
        EXPECT_EQ(row->ratio(), 0.5625f);
        EXPECT_EQ(row->currentHeight(), 562.5f);
        EXPECT_EQ(row->thumbnailImageView()->frame(), CGRect(0, 0, 1000, 562.5));
        EXPECT_EQ(row->maskImageView()->frame(), row->thumbnailImageView()->frame());
        EXPECT_EQ(blur->frame(), row->thumbnailImageView()->frame());
        EXPECT_EQ(row->actView()->center(), (CGPoint{500, 281.25}));
        EXPECT_EQ(row->stateImageView()->center(), (CGPoint{500, 281.25}));
        const CGFloat height = textHeight(caption, row->myTextView()->font(), 1000);
        EXPECT_EQ(row->myTextView()->frame(), CGRect(0, 562.5, 1000, height));
        EXPECT_EQ(row->myTextView()->alpha(), caption.empty() ? 0 : 1);
        EXPECT_EQ(row->baseView()->frame(), CGRect(5, 5, 1000, 562.5 + height));
        EXPECT_EQ(row->constrainedHeight(), 562.5 + height + 22.5);
        EXPECT_EQ(row->accessibility().label, caption.empty() ? "1:05" : "the brook, 1:05");
    }
    EXPECT_EQ(row->myTextView()->text(), "");

    const CGRect centred = row->stateImageView()->frame();
    row->setVideoDictionary(record("{}"));
    platform.window().setSize({410, 700});
    row->setFrame({0, 100, 410, 610});
    EXPECT_EQ(row->stateImageView()->frame(), centred) << "without a width nothing is laid out again";
}

TEST_F(ArticleVideoRowTest, TallThumbnailsStandBeforeABlurredCopy) {
    const std::pair<const char*, double> cases[] = {
        {R"({"thumbnail":"http://h/t","video_width":9,"video_height":16})", 1},
        {R"({"thumbnail":"http://h/t","video_width":16,"video_height":9})", 0},
        {R"({"thumbnail":"http://h/t","video_width":9,"video_height":9})", 0}};
    for (const auto& [sizes, maskAlpha] : cases) {
        row->setVideoDictionary(record(sizes));
        server->answerMedia("http://h/t", picture());
        EXPECT_NE(shownBytes(*row->thumbnailImageView()), picture().view()) << "not before the next turn";
        platform.settle();
        EXPECT_EQ(shownBytes(*row->thumbnailImageView()), picture().view());
        EXPECT_EQ(row->maskImageView()->alpha(), maskAlpha) << sizes;
        if (maskAlpha > 0) {
            EXPECT_EQ(row->maskImageView()->image(), row->thumbnailImageView()->image());
        }
        row->updateVideoThumbnailWith(Data::copy("no picture"));
        EXPECT_EQ(row->thumbnailImageView()->image(), nullptr);
    }
    server->cachedMedia = {{"http://h/t", picture("anonymousAvatar")}};
    row->loadThumbnail();
    platform.settle();
    EXPECT_EQ(shownBytes(*row->thumbnailImageView()), picture("anonymousAvatar").view());
    server->answerMedia("http://h/t", Data());
    platform.settle();
    const auto shown = row->thumbnailImageView()->image();
    EXPECT_NE(shown, nullptr) << "a failed request changes nothing";
    row->setVideoDictionary(record(R"({"thumbnail":"http://h/a"})"));
    row->setVideoDictionary(record(R"({"thumbnail":"http://h/b"})"));
    server->answerMedia("http://h/a", picture());
    platform.settle();
    EXPECT_EQ(row->thumbnailImageView()->image(), shown) << "the picture of another video";
}

TEST_F(ArticleVideoRowTest, AddressesOfTheLocalNetworkAreDownloaded) {
    const std::pair<const char*, bool> cases[] = {{remote, true},
                                                  {local, false},
                                                  {"HTTP://192.0.2.1/a.mp4", false},
                                                  {"http://19", true},
                                                  {"http://192", false},
                                                  {"https://192.168.1.4/a.mp4", true},
                                                  {"", true},
                                                  {"http://10.0.0.1/a", true}};
    for (const auto& [address, streamed] : cases) {
        for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::pad, UIUserInterfaceIdiom::mac}) {
            useIdiom(idiom);
            EXPECT_EQ(VideoRow::isStreamsServer(address), streamed && idiom != UIUserInterfaceIdiom::mac) << address;
        }
    }
    const std::pair<const char*, const char*> urls[] = {
        {"http://h/a b.mp4", "http://h/a b.mp4"},
        {"HTTPS://h/a.mp4", "HTTPS://h/a.mp4"},
        {"/home/\xC3\xA4 b/%20#?.mp4", "file:///home/%C3%A4%20b/%2520%23%3F.mp4"},
        {"", ""},
        {"a.mp4", ""},
        {"ftp://h/a.mp4", ""},
        {"file:///etc/passwd", ""},
        {"javascript:alert(1)", ""},
        {"http://", ""},
    };
    for (const auto& [path, url] : urls) EXPECT_EQ(playerURL(path), url) << path;
}

TEST_F(ArticleVideoRowTest, AStreamedVideoPlaysPausesAndRewindsAtItsEnd) {
    showVideo(remote);
    row->playOrPause();
    ASSERT_EQ(players.urls(), Lines{remote});
    EXPECT_EQ(players.last().calls, Lines{"play"});
    EXPECT_EQ(row->stateImageView()->alpha(), 0);
    EXPECT_TRUE(row->actView()->isAnimating());
    const auto& above = row->thumbnailImageView()->subviews();
    ASSERT_EQ(above.size(), 4u);
    EXPECT_EQ(above[0], row->playLayer());
    EXPECT_EQ(above[1], row->durationLabel());
    EXPECT_EQ(above[2], row->actView());
    EXPECT_EQ(above[3], row->stateImageView());
    EXPECT_EQ(row->playLayer()->frame(), CGRect(0, 0, 1000, 562.5));

    platform.advance(0.25);
    EXPECT_EQ(row->durationLabel()->text(), "0:00/0:00") << "nothing is known yet";
    EXPECT_TRUE(row->actView()->isAnimating());
    players.last().becomeReady(CMTimeMake(3725 * 600 + 599, 600));
    players.last().position = CMTimeMake(7 * 600 + 599, 600);
    platform.advance(0.25);
    EXPECT_EQ(row->durationLabel()->text(), "0:07/1:2:05");
    EXPECT_FALSE(row->actView()->isAnimating());

    row->playOrPause();
    EXPECT_EQ(players.last().calls, (Lines{"play", "pause"}));
    EXPECT_EQ(row->stateImageView()->alpha(), 1);
    players.last().position = CMTimeMake(42 * 600, 600);
    platform.advance(0.25);
    EXPECT_EQ(row->durationLabel()->text(), "0:42/1:2:05") << "the label goes on showing the position";
    row->playOrPause();
    EXPECT_EQ(players.last().calls, (Lines{"play", "pause", "play"}));

    players.last().finish();
    EXPECT_EQ(row->stateImageView()->alpha(), 0);
    platform.advance(0.25);
    EXPECT_EQ(row->stateImageView()->alpha(), 1) << "the symbol comes back at the end";
    row->playOrPause();
    EXPECT_EQ(row->stateImageView()->alpha(), 0);
    EXPECT_EQ(players.last().calls, (Lines{"play", "pause", "play", "seek 0/600", "play"}));
    row->stop();
    EXPECT_EQ(players.playing(), 0u);
    EXPECT_EQ(players.urls().size(), 1u) << "one player for all of it";

    row->setFrame({0, 100, 1010, 800});
    platform.window().setSize({510, 700});
    row->setFrame({0, 100, 510, 400});
    EXPECT_EQ(row->playLayer()->frame(), CGRect(0, 0, 500, 281.25)) << "follows the row";
}

TEST_F(ArticleVideoRowTest, ALocalVideoIsDownloadedToTheOneFile) {
    for (const auto idiom : {UIUserInterfaceIdiom::phone, UIUserInterfaceIdiom::mac}) {
        useIdiom(idiom);
        showVideo(idiom == UIUserInterfaceIdiom::mac ? remote : local);
        const std::string address = recordText(row->videoDictionary(), "video");
        const auto before = players.urls().size();
        row->stop();
        row->playWithURL("");
        row->playOrPause();
        EXPECT_TRUE(row->actView()->isAnimating());
        EXPECT_EQ(row->actView()->center(), (CGPoint{500, 281.25}));
        server->answerMedia(address, Data::copy("the video"));
        finishWriting();
        ASSERT_EQ(players.urls().size(), before + 1);
        EXPECT_EQ(players.last().url, "file://" + home.path("Documents/current.mp4"));
        EXPECT_EQ(home.read("Documents/current.mp4"), "the video");
        EXPECT_EQ(players.last().calls, Lines{"play"});
    }

    row->playWithURL("");
    server->cachedMedia = {{remote, Data::copy("cached")}};
    row->playOrPause();
    finishWriting();
    EXPECT_EQ(home.read("Documents/current.mp4"), "cached");
    const auto count = players.urls().size();
    server->answerMedia(remote, Data::copy("cached"));
    finishWriting();
    EXPECT_EQ(players.urls().size(), count) << "the answer that follows cached data does not start it again";
    std::size_t files = 0;
    for ([[maybe_unused]] const auto& file : std::filesystem::directory_iterator(home.path("Documents"))) ++files;
    EXPECT_EQ(files, 1u) << "nothing is left beside it";
}

TEST_F(ArticleVideoRowTest, ADownloadThatIsNoLongerWantedDoesNotPlay) {
    const auto expectSilence = [&](const char* what) {
        server->answerMedia(local, Data::copy("video"));
        finishWriting();
        EXPECT_EQ(players.alive(), 0u) << what;
        EXPECT_FALSE(row->actView()->isAnimating()) << what;
        EXPECT_FALSE(std::filesystem::exists(currentVideoFile())) << what;
    };
    showVideo(local);
    row->playOrPause();
    row->stop();
    expectSilence("stopped");

    row->playOrPause();
    showVideo(remote);
    expectSilence("the row shows another video");

    showVideo(local);
    row->playOrPause();
    server->answerMedia(local, Data::copy("video"));
    row->stop();
    finishWriting();
    EXPECT_EQ(players.alive(), 0u) << "stopped while the file was written";

    row->playOrPause();
    server->answerMedia(local, Data());
    finishWriting();
    EXPECT_TRUE(row->actView()->isAnimating()) << "a failed download leaves the wheel turning";
    EXPECT_EQ(players.alive(), 0u);

    row->playOrPause();
    showVideo(local);
    server->answerMedia(local, Data::copy("video"));
    finishWriting();
    EXPECT_EQ(players.playing(), 1u) << "a row that is only laid out anew goes on";
}

TEST_F(ArticleVideoRowTest, WhatCannotPlayIsLogged) {
    for (const char* address : {"", "a.mp4", "ftp://example.org/a.mp4", "12345"}) {
        showVideo(address);
        row->playOrPause();
        EXPECT_EQ(logged(), Lines{"playURL init failed."}) << address;
        EXPECT_EQ(row->stateImageView()->alpha(), 1) << address;
        EXPECT_FALSE(row->actView()->isAnimating()) << address;
    }
    EXPECT_TRUE(players.urls().empty());
    players.refuses = true;
    showVideo(remote);
    row->playOrPause();
    EXPECT_EQ(logged(), Lines{"player init failed."});
    EXPECT_EQ(row->player(), nullptr);

    home.write("Documents", "a file where the folder should be");
    players.refuses = false;
    showVideo(local);
    row->playOrPause();
    server->answerMedia(local, Data::copy("video"));
    finishWriting();
    EXPECT_EQ(logged(), Lines{"playURL init failed."}) << "the file could not be written";
}

TEST_F(ArticleVideoRowTest, APlayerThatWaitsOrHasFailedIsReplacedByTheNextSelection) {
    const auto playing = AVPlayerTimeControlStatus::playing,
               waiting = AVPlayerTimeControlStatus::waitingToPlayAtSpecifiedRate;
    const struct {
        const char* what;
        bool hasPlayed;
        AVPlayerStatus status;
        AVPlayerTimeControlStatus control;
    } cases[] = {{"waits", false, AVPlayerStatus::unknown, waiting},
                 {"failed at once", false, AVPlayerStatus::failed, waiting},
                 {"failed while it played", true, AVPlayerStatus::failed, playing}};
    for (const auto& [what, hasPlayed, status, control] : cases) {
        showVideo(remote);
        row->playOrPause();
        const auto made = players.urls().size();
        if (hasPlayed) players.last().becomeReady(CMTimeMake(10 * 600, 600));
        platform.advance(0.25);
        players.last().currentStatus = status;
        players.last().control = control;
        platform.advance(0.25);
        const bool hasFailed = status == AVPlayerStatus::failed;
        EXPECT_EQ(row->actView()->isAnimating(), !hasFailed) << what;
        EXPECT_EQ(row->stateImageView()->alpha(), hasFailed ? 1 : 0) << what;
        row->playOrPause();
        EXPECT_EQ(players.urls().size(), made + 1) << what;
        EXPECT_EQ(players.last().calls, Lines{"play"}) << what;
        EXPECT_TRUE(row->actView()->isAnimating()) << what;
        EXPECT_EQ(row->thumbnailImageView()->subviews().size(), 4u) << what;
        row->stop();
        platform.settle();
        EXPECT_EQ(players.alive(), 1u) << what << ": one decoder a row";
    }
}

}  // namespace
}  // namespace ostrel
