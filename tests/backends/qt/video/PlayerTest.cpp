#include "backends/qt/video/QtPlayer.h"
#include "backends/qt/video/VideoConversion.h"
#include "platform/uikit/controls/AVPlayerLayer.h"
#include "tests/backends/qt/QtTestWindow.h"
#include "tests/support/ScriptedHttpServer.h"
#include "tests/support/TemporaryFolder.h"

#include <cmath>
#include <cstring>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <QElapsedTimer>
#include <QVideoFrameFormat>

namespace ostrel::test {

namespace {

const UIColor red{1, 0, 0, 1}, green{0, 1, 0, 1}, white{1, 1, 1, 1}, clear{};
using Status = AVPlayerStatus;
using TimeControl = AVPlayerTimeControlStatus;

std::string clip(const std::string& name) { return std::string(OSTREL_SAMPLE_CLIPS) + "/" + name; }

std::shared_ptr<QtPlayer> playerOf(const std::string& path) {
    return std::dynamic_pointer_cast<QtPlayer>(QtPlayerFactory().makePlayer("file://" + path));
}

std::string contentsOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

/// A frame of four colours: red, green; blue, white.
QVideoFrame quarters(QSize size) {
    QVideoFrame frame(QVideoFrameFormat(size, QVideoFrameFormat::Format_BGRX8888));
    if (!frame.map(QVideoFrame::WriteOnly)) return {};
    for (int y = 0; y < size.height(); ++y) {
        auto* line = reinterpret_cast<QRgb*>(frame.bits(0) + y * frame.bytesPerLine(0));
        for (int x = 0; x < size.width(); ++x) {
            const bool right = 2 * x >= size.width(), below = 2 * y >= size.height();
            line[x] =
                below ? (right ? qRgb(255, 255, 255) : qRgb(0, 0, 255)) : (right ? qRgb(0, 255, 0) : qRgb(255, 0, 0));
        }
    }
    frame.unmap();
    return frame;
}

TEST(VideoConversion, FramesAreTurnedUpright) {
    const QColor r(255, 0, 0), g(0, 255, 0), b(0, 0, 255), w(255, 255, 255);
    struct Case {
        VideoOrientation orientation;
        QSize upright;
        // Upper left, upper right, lower left, lower right.
        QColor corners[4];
    };
    const Case cases[] = {
        {{0, false}, {80, 40}, {r, g, b, w}}, {{1, false}, {40, 80}, {b, r, w, g}},
        {{2, false}, {80, 40}, {w, b, g, r}}, {{3, false}, {40, 80}, {g, w, r, b}},
        {{0, true}, {80, 40}, {g, r, w, b}},  {{1, true}, {40, 80}, {r, b, g, w}},
    };
    const QVideoFrame frame = quarters({80, 40});
    for (const Case& c : cases) {
        SCOPED_TRACE(testing::Message() << c.orientation.quarterTurns << " " << c.orientation.mirrored);
        EXPECT_EQ(uprightSize(frame, c.orientation), c.upright);
        const QImage picture = convertedFrame(frame, c.upright / 2, c.orientation);
        ASSERT_EQ(picture.size(), c.upright / 2);
        for (int i = 0; i < 4; ++i) {
            const int x = (i % 2 ? 3 : 1) * picture.width() / 4, y = (i / 2 ? 3 : 1) * picture.height() / 4;
            EXPECT_TRUE(isNear(picture.pixelColor(x, y), c.corners[i])) << i;
        }
    }
}

TEST(VideoConversion, SizesFitInWholePixels) {
    struct Case {
        QSize size, bounds, fits;
    };
    const Case cases[] = {
        {{1920, 1080}, {365, 365}, {365, 205}}, {{1080, 1920}, {1000, 300}, {169, 300}},
        {{10, 10}, {400, 300}, {300, 300}},     {{10000, 1}, {300, 300}, {300, 1}},
        {{0, 0}, {300, 300}, {1, 1}},           {{640, 360}, {640, 360}, {640, 360}},
    };
    for (const Case& c : cases) EXPECT_EQ(fittingSize(c.size, c.bounds), c.fits) << c.size.width();
}

TEST(VideoPictures, AreMadeOneAtATimeAndOnlyForAViewThatShowsThem) {
    auto video = std::make_shared<VideoPicture>();
    std::atomic<int> told = 0;
    const auto look = [&] { return video->show({{40, 40}, 1, {}}, [&] { ++told; }); };
    video->setFrame(quarters({80, 40}));
    EXPECT_EQ(video->conversionCount(), 0u) << "no view shows the video";
    look();
    ASSERT_TRUE(waitUntil([&] { return told == 1; }));
    // The picture was not taken: further frames wait, and only the last of them is converted.
    for (int i = 0; i < 20; ++i) video->setFrame(quarters({40, 80}));
    EXPECT_EQ(video->conversionCount(), 1u);
    EXPECT_EQ(look().picture.size(), QSize(40, 20));
    ASSERT_TRUE(waitUntil([&] { return told == 2; }));
    EXPECT_EQ(look().picture.size(), QSize(20, 40));
    video->hide();
    video->setFrame(quarters({80, 40}));
    EXPECT_EQ(video->conversionCount(), 2u) << "out of sight";
    EXPECT_EQ(look().picture.size(), QSize(20, 40)) << "the last picture stays until there is a new one";
    ASSERT_TRUE(waitUntil([&] { return told == 3; }));
    EXPECT_EQ(look().picture.size(), QSize(40, 20));
}

TEST(Player, PlaysPausesSeeksAndEndsWhereTheFileDoes) {
    auto player = playerOf(clip("sea.mp4"));
    EXPECT_EQ(player->timeControlStatus(), TimeControl::paused);
    ASSERT_TRUE(waitUntil([&] { return player->status() == Status::readyToPlay; }));
    EXPECT_EQ(player->timeControlStatus(), TimeControl::paused) << "opening does not play";
    ASSERT_TRUE(player->duration().isKnown());
    EXPECT_NEAR(player->duration().seconds(), 6, 0.1);

    player->play();
    EXPECT_NE(player->timeControlStatus(), TimeControl::paused) << "at once, though it waits yet";
    ASSERT_TRUE(waitUntil(
        [&] { return player->timeControlStatus() == TimeControl::playing && player->currentTime().seconds() > 0.3; }));
    EXPECT_GT(player->picture()->frameCount(), 3u);
    player->pause();
    EXPECT_EQ(player->timeControlStatus(), TimeControl::paused);
    const CMTime paused = player->currentTime();
    EXPECT_EQ(paused.timescale, player->duration().timescale);

    player->seekToTime(CMTimeMake(11, 2));
    EXPECT_EQ(player->currentTime().seconds(), 5.5) << "known before the player has done it";
    EXPECT_EQ(player->timeControlStatus(), TimeControl::paused);
    player->play();
    ASSERT_TRUE(waitUntil([&] { return player->timeControlStatus() == TimeControl::playing; }));
    ASSERT_TRUE(waitUntil([&] { return player->timeControlStatus() == TimeControl::paused; }));
    EXPECT_EQ(player->currentTime(), player->duration());

    player->seekToTime(CMTimeMake(0, player->duration().timescale));
    EXPECT_EQ(player->currentTime().value, 0);
    player->play();
    ASSERT_TRUE(waitUntil([&] {
        const double now = player->currentTime().seconds();
        return player->timeControlStatus() == TimeControl::playing && now > 0.2 && now < 3;
    })) << "it plays again from the beginning";
    player->seekToTime(CMTimeMake(1000, 1));
    EXPECT_EQ(player->currentTime(), player->duration()) << "beyond the end is the end";
}

TEST(Player, CommandsBeforeTheFileIsOpenAreDone) {
    auto player = playerOf(clip("wheel.mp4"));
    player->play();
    player->seekToTime(CMTimeMake(2, 1));
    ASSERT_TRUE(waitUntil([&] {
        const double now = player->currentTime().seconds();
        return player->timeControlStatus() == TimeControl::playing && now > 2.1;
    })) << player->currentTime().seconds();
    EXPECT_LT(player->currentTime().seconds(), 3.9);
}

TEST(Player, TellsWhichFilesItCannotPlay) {
    TemporaryFolder folder;
    const std::string whole = contentsOf(clip("wheel.mp4"));
    ASSERT_GT(whole.size(), 20000u);
    struct Case {
        const char* what;
        std::optional<std::string> contents;
        Status expected;
    };
    const Case cases[] = {
        {"missing", std::nullopt, Status::failed},
        {"empty", "", Status::failed},
        {"text", "<html><body>404</body></html>", Status::failed},
        {"zeros", std::string(100'000, '\0'), Status::failed},
        {"cut within the header", whole.substr(0, 900), Status::failed},
        {"cut within the media", whole.substr(0, whole.size() / 2), Status::readyToPlay},
        {"a picture named as a video", contentsOf(clip("wheel.jpg")).substr(0, 3), Status::failed},
    };
    for (const Case& c : cases) {
        const std::string path = folder.path() + "/" + std::to_string(&c - cases) + ".mp4";
        if (c.contents) std::ofstream(path, std::ios::binary) << *c.contents;
        auto player = playerOf(path);
        // The cut file ends soon after this time.
        player->seekToTime(CMTimeMake(3, 2));
        player->play();
        EXPECT_TRUE(waitUntil([&] { return player->status() != Status::unknown; })) << c.what;
        EXPECT_EQ(player->status(), c.expected) << c.what;
        if (c.expected != Status::failed) {
            EXPECT_TRUE(waitUntil([&] { return player->timeControlStatus() == TimeControl::paused; }))
                << c.what << ": it comes to an end";
            continue;
        }
        EXPECT_EQ(player->timeControlStatus(), TimeControl::paused) << c.what;
        player->play();
        player->seekToTime(CMTimeMake(3, 1));
        EXPECT_EQ(player->timeControlStatus(), TimeControl::paused) << c.what << ": for good";
        EXPECT_FALSE(player->picture()->hasFrame()) << c.what;
    }
}

TEST(Player, AddressesOfOtherKindsHaveNone) {
    for (const char* address :
         {"", "abc", "/tmp/a.mp4", "ftp://127.0.0.1/a.mp4", "data:video/mp4,a", "http://[", "concat:a|b"})
        EXPECT_EQ(QtPlayerFactory().makePlayer(address), nullptr) << address;
}

TEST(Player, IsLetGoWhateverItDoes) {
    for (int i = 0; i < 8; ++i) {
        auto player = playerOf(clip(i % 2 ? "sea.mp4" : "missing.mp4"));
        if (i > 1) player->play();
        if (i > 3) waitUntil([&] { return player->status() != Status::unknown; });
        if (i > 5) waitUntil([&] { return player->picture()->hasFrame() || i % 2 == 0; });
        const std::weak_ptr<VideoPicture> picture = player->picture();
        player.reset();
        EXPECT_TRUE(waitUntil([&] { return picture.expired(); })) << "the decoder goes too";
    }
}

TEST(Player, StreamsFromServersAndOutlivesTheirFaults) {
    ScriptedHttpServer server;
    server.on("/rain.mp4",
              ScriptedHttpServer::answer(contentsOf(clip("rain.mp4")), 200, "Content-Type: video/mp4\r\n"));
    server.on("/page.mp4", ScriptedHttpServer::answer("<html><body>Sorry</body></html>"));
    ScriptedHttpServer::Answer silent;
    silent.hangs = true;
    server.on("/silent.mp4", silent);
    const auto playerAt = [&](const std::string& path) {
        return std::dynamic_pointer_cast<QtPlayer>(QtPlayerFactory().makePlayer(server.address() + path));
    };
    auto streamed = playerAt("/rain.mp4");
    streamed->play();
    EXPECT_TRUE(waitUntil([&] {
        const VideoPicture::Place place{{400, 400}, 1, {}};
        return streamed->picture()->show(place, [] {}).picture.size() == QSize(225, 400);
    })) << "upright, though the file has the frames in landscape";
    EXPECT_NEAR(streamed->duration().seconds(), 4, 0.1);
    for (const char* path : {"/page.mp4", "/missing.mp4"}) {
        auto player = playerAt(path);
        player->play();
        EXPECT_TRUE(waitUntil([&] { return player->status() == Status::failed; })) << path;
    }
    auto waiting = playerAt("/silent.mp4");
    waiting->play();
    EXPECT_TRUE(waitUntil([&] { return server.requestCount("/silent.mp4") > 0; }));
    EXPECT_EQ(waiting->status(), Status::unknown);
    EXPECT_EQ(waiting->timeControlStatus(), TimeControl::waitingToPlayAtSpecifiedRate);
    QElapsedTimer since;
    since.start();
    waiting.reset();
    EXPECT_LT(since.elapsed(), 500) << "letting go does not wait for the server";
}

/// How different two pictures of one size are: the mean of the differences of all components.
double difference(const QImage& a, const QImage& b) {
    const QImage x = a.convertToFormat(QImage::Format_RGB32), y = b.convertToFormat(QImage::Format_RGB32);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto* p = x.constScanLine(row);
        const auto* q = y.constScanLine(row);
        for (int i = 0; i < x.width() * 4; ++i) sum += i % 4 == 3 ? 0 : std::abs(p[i] - q[i]);
    }
    return sum / (3.0 * x.width() * x.height());
}

TEST(Player, FramesLookAsTheStillsDo) {
    // The file of the last one has its frames in landscape and a quarter turn.
    for (const std::string name : {"sea", "lantern", "wheel", "rain"}) {
        const QImage still(QString::fromStdString(clip(name + ".jpg")));
        ASSERT_FALSE(still.isNull());
        auto player = playerOf(clip(name + ".mp4"));
        player->play();
        ASSERT_TRUE(waitUntil([&] { return player->picture()->frameCount() >= 1; }));
        player->pause();
        player->seekToTime(CMTimeMake(0, 1));
        const VideoPicture::Place place{still.size(), 1, {}};
        double least = 255;
        waitUntil([&] {
            const QImage picture = player->picture()->show(place, [] {}).picture;
            if (picture.size() == still.size()) least = std::min(least, difference(picture, still));
            return least < 4;
        });
        EXPECT_LT(least, 4) << name;
    }
}

/// Waits until the paused player delivers no more frames.
void comeToRest(QtTestWindow& window, const QtPlayer& player) {
    std::uint64_t frames = 0;
    int quiet = 0;
    waitUntil([&] {
        window.grab();
        quiet = std::exchange(frames, player.picture()->frameCount()) == frames ? quiet + 1 : 0;
        return quiet > 30;
    });
}

/// A row with a player in it, and a label in front of the player.
Spec rowWithPlayer(double top, const std::shared_ptr<PlayerEngine>& engine) {
    Spec layer = box({0, 0, 160, 90}, clear);
    layer.state.content = PlayerContent{engine};
    Spec picture = box({20, 5, 160, 90}, red, {layer, box({100, 60, 40, 20}, green)});
    picture.state.clipsToBounds = true;
    return surface({0, top, 200, 100}, white, {picture});
}

TEST(PlayerOnScreen, FramesAreAboveTheRowBelowWhatIsInFrontAndMoveWithIt) {
    auto player = playerOf(clip("sea.mp4"));
    Spec list = box({0, 0, 200, 200}, white, {rowWithPlayer(0, player)});
    list.state.clipsToBounds = true;
    QtTestWindow window;
    const auto tags = window.mount(box({0, 0, 200, 200}, white, {list}));
    window.grab();
    EXPECT_EQ(window.at(30, 15), QColor(255, 0, 0)) << "nothing before the first frame";
    EXPECT_EQ(window.at(130, 75), QColor(0, 255, 0));
    player->play();
    ASSERT_TRUE(waitUntil([&] { return player->picture()->frameCount() >= 2; }));
    player->pause();
    const auto isRed = [&](double x, double y) { return isNear(window.at(x, y), QColor(255, 0, 0), 20); };
    ASSERT_TRUE(waitUntil([&] {
        window.grab();
        return !isRed(30, 15);
    }));
    EXPECT_FALSE(isRed(175, 90)) << "to the lower right corner";
    EXPECT_EQ(window.at(10, 50), QColor(255, 255, 255));
    EXPECT_EQ(window.at(130, 75), QColor(0, 255, 0)) << "the label is in front";

    // Scrolling by 40 points moves the picture and the label without another conversion.
    comeToRest(window, *player);
    const QImage before = window.grab();
    const auto conversions = player->picture()->conversionCount();
    ViewState state = list.state;
    state.boundsOrigin = {0, 40};
    window.mount({Mutation::update(tags[1], std::make_shared<ViewState>(state), changedBoundsOrigin)});
    const QImage after = window.grab();
    const auto pixels = static_cast<int>(40 * window.scale());
    EXPECT_EQ(after.copy(0, 0, after.width(), pixels), before.copy(0, pixels, before.width(), pixels));
    EXPECT_EQ(player->picture()->conversionCount(), conversions);

    // Outside of the viewport no frame is converted, although the player plays.
    state.boundsOrigin = {0, 300};
    window.mount({Mutation::update(tags[1], std::make_shared<ViewState>(state), changedBoundsOrigin)});
    window.grab();
    EXPECT_FALSE(player->picture()->isShown());
    const auto hidden = player->picture()->conversionCount();
    const auto frames = player->picture()->frameCount();
    player->play();
    ASSERT_TRUE(waitUntil([&] { return player->picture()->frameCount() >= frames + 5; }));
    EXPECT_EQ(player->picture()->conversionCount(), hidden);
    state.boundsOrigin = {0, 0};
    window.mount({Mutation::update(tags[1], std::make_shared<ViewState>(state), changedBoundsOrigin)});
    EXPECT_TRUE(waitUntil([&] { return player->picture()->conversionCount() > hidden + 2; }))
        << "visible again, it shows new frames";
}

TEST(PlayerOnScreen, ComesAndGoesInTheMiddleOfARow) {
    auto player = playerOf(clip("wheel.mp4"));
    player->play();
    ASSERT_TRUE(waitUntil([&] { return player->picture()->hasFrame(); }));
    player->pause();
    Spec picture = box({20, 5, 90, 90}, red, {box({60, 60, 20, 20}, green)});
    QtTestWindow window;
    const auto tags = window.mount(box({0, 0, 200, 200}, white, {surface({0, 0, 200, 100}, white, {picture})}));
    const auto probe = [&](bool plays, const char* when) {
        EXPECT_TRUE(waitUntil([&] {
            window.grab();
            return isNear(window.at(65, 20), QColor(255, 0, 0)) != plays;
        })) << when;
        EXPECT_EQ(window.at(90, 75), QColor(0, 255, 0)) << when;
    };
    probe(false, "before");
    const ViewTag parent = tags[2];
    std::vector<Mutation> mutations;
    std::vector<ViewTag> added;
    Spec layer = box({0, 0, 90, 90}, clear);
    layer.state.content = PlayerContent{player};
    QtTestWindow::add(mutations, layer, parent, 1, added);
    window.mount(std::move(mutations));
    EXPECT_TRUE(waitUntil([&] {
        window.grab();
        return !isNear(window.at(90, 75), QColor(0, 255, 0));
    })) << "added last it is in front of the label";
    window.mount({Mutation::remove(parent, tags[3], 0), Mutation::insert(parent, tags[3], 1)});
    probe(true, "with the label brought to the front");
    window.mount({Mutation::remove(parent, added[0], 0), Mutation::destroy(added[0])});
    probe(false, "after");
    EXPECT_FALSE(player->picture()->isShown());
    EXPECT_EQ(window.view().statistics().pictures, 1u) << "the label is part of its row again";
}

TEST(PlayerOnScreen, RoundCornersCutItsFrames) {
    auto player = playerOf(clip("wheel.mp4"));
    player->play();
    Spec layer = box({0, 0, 100, 100}, clear);
    layer.state.content = PlayerContent{player};
    Spec picture = box({20, 20, 100, 100}, clear, {layer});
    picture.state.clipsToBounds = true;
    picture.state.cornerRadius = 30;
    QtTestWindow window;
    window.mount(box({0, 0, 200, 200}, green, {surface({0, 0, 200, 200}, green, {picture})}));
    const QColor qGreen(0, 255, 0);
    ASSERT_TRUE(waitUntil([&] {
        window.grab();
        return !isNear(window.at(70, 30), qGreen);
    }));
    for (const CGPoint corner : {CGPoint{22, 22}, {118, 22}, {22, 118}, {118, 118}})
        EXPECT_EQ(window.at(corner.x, corner.y), qGreen) << corner.x << ", " << corner.y;
    EXPECT_FALSE(isNear(window.at(21, 70), qGreen)) << "to the edge elsewhere";
}

}  // namespace

}  // namespace ostrel::test
