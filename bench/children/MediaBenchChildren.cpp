#include "backends/qt/paint/PictureStore.h"
#include "backends/qt/QtPlatform.h"
#include "backends/qt/video/QtPlayer.h"
#include "backends/qt/window/QtWindowView.h"
#include "bench/support/BenchChild.h"
#include "bench/support/FrameMeter.h"
#include "bench/support/ProcessMeter.h"
#include "platform/uikit/controls/AVPlayerLayer.h"
#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/view/UIWindow.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImageReader>
#include <QMediaPlayer>
#include <QProcess>
#include <QQuickWindow>
#include <QUrl>
#include <QVideoFrame>
#include <QVideoSink>

#include <cstdio>
#include <string>

namespace ostrel {

namespace {

int report(double value) {
    if (value < 0) return 1;
    std::printf("%.9g\n", value);
    return 0;
}

QSize decodeOurs(const std::string& path) {
    const auto image = UIImage::imageWithData(Data::mapFile(path));
    if (!image) return {};
    PictureStore store([] {});
    constexpr double width = 320;
    const double height = width * image->size().height / image->size().width;
    return store.obtain(*image, PictureStore::keyFor(*image, width, height)).size();
}

QSize decodePeer(const std::string& path) {
    QImageReader reader(QString::fromStdString(path));
    reader.setAutoTransform(true);
    return reader.read().scaledToWidth(320, Qt::SmoothTransformation).size();
}

/// A player in a window, shown 365 points wide.
class PlayerWindow final {
public:
    PlayerWindow() {
        root_ = make<UIWindow>(CGSize{375, 667});
        window_.resize(375, 667);
        view_ = new QtWindowView(root_);
        view_->setParentItem(window_.contentItem());
        view_->setSize(QSizeF(375, 667));
        controller_ = make<UIViewController>();
        root_->setRootViewController(controller_);
        window_.show();
        QObject::connect(
            &window_, &QQuickWindow::frameSwapped, &window_, [this] { ++frames_; }, Qt::DirectConnection);
    }
    ~PlayerWindow() {
        root_->setRootViewController(nullptr);
        delete view_;
    }
    bool settle() {
        int quiet = 0;
        return FrameMeter::waitFor([&] { return (quiet = view_->isSettled() ? quiet + 1 : 0) > 20; }, 20);
    }
    bool open(const std::string& path) {
        player_ = AVPlayer::playerWithPlayerItem(
            std::make_shared<AVPlayerItem>(std::make_shared<const AVURLAsset>("file://" + path)));
        if (!player_) return false;
        auto layer = AVPlayerLayer::playerLayerWithPlayer(player_);
        layer->setFrame({5, 5, 365, 365});
        controller_->view()->addSubview(layer);
        player_->play();
        return true;
    }
    AVPlayer& player() { return *player_; }
    const VideoPicture& picture() const { return *dynamic_cast<QtPlayer&>(*player_->engine()).picture(); }
    int frames() const { return frames_; }

private:
    std::shared_ptr<UIWindow> root_;
    QQuickWindow window_;
    QtWindowView* view_ = nullptr;
    std::shared_ptr<UIViewController> controller_;
    std::shared_ptr<AVPlayer> player_;
    std::atomic<int> frames_ = 0;
};

double firstFrameOfPeer(const QString& path) {
    QMediaPlayer player;
    QVideoSink sink;
    std::atomic<bool> hasFrame = false;
    QObject::connect(
        &sink, &QVideoSink::videoFrameChanged, &sink,
        [&](const QVideoFrame& frame) { hasFrame = hasFrame || frame.isValid(); }, Qt::DirectConnection);
    player.setVideoSink(&sink);
    player.setSource(QUrl::fromLocalFile(path));
    player.play();
    return FrameMeter::waitFor([&] { return hasFrame.load(); }, 10) ? 0 : -1;
}

}  // namespace

int runThumbnailChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    if (argc < 6) return 2;
    const std::string side = argv[3], what = argv[4], path = argv[5];
    const auto decode = side == "ours" ? decodeOurs : decodePeer;
    // Loads the plugin and its tables before the measurement.
    if (what == "time" && decode(path) != QSize(320, 240)) return 1;
    forgetPeak();
    const double before = residentBytes();
    QElapsedTimer since;
    since.start();
    if (decode(path) != QSize(320, 240)) return 1;
    return report(what == "time" ? double(since.nsecsElapsed()) / 1e6 : peakBytes() - before);
}

int runVideoFirstChild(int argc, char** argv) {
    qputenv("QT_MEDIA_BACKEND", "ffmpeg");
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 5) return 2;
    PlayerWindow window;
    if (!window.settle()) return 1;
    QElapsedTimer since;
    since.start();
    if (std::string(argv[3]) == "peer") {
        if (firstFrameOfPeer(argv[4]) < 0) return 1;
        return report(double(since.nsecsElapsed()) / 1e6);
    }
    if (!window.open(argv[4])) return 1;
    if (!FrameMeter::waitFor([&] { return window.picture().conversionCount() > 0; }, 10)) return 1;
    const int frames = window.frames();
    if (!FrameMeter::waitFor([&] { return window.frames() > frames; }, 10)) return 1;
    return report(double(since.nsecsElapsed()) / 1e6);
}

int runVideoPlayChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 5) return 2;
    const std::string what = argv[3];
    if (what == "decode") {
        const double before = childrenSeconds();
        if (QProcess::execute("ffmpeg", {"-v", "error", "-i", argv[4], "-f", "null", "-"}) != 0) return 1;
        return report(childrenSeconds() - before);
    }
    PlayerWindow window;
    if (!window.settle()) return 1;
    const double before = processSeconds();
    if (!window.open(argv[4])) return 1;
    const auto& player = window.player();
    if (!FrameMeter::waitFor([&] { return player.status() == AVPlayerStatus::readyToPlay; }, 10)) return 1;
    const auto hasEnded = [&] { return player.timeControlStatus() == AVPlayerTimeControlStatus::paused; };
    if (!FrameMeter::waitFor(hasEnded, 30)) return 1;
    if (what == "time") return report(processSeconds() - before);
    const double expected = std::round(player.currentItem()->duration().seconds() * 30);
    return report(std::max(0.0, expected - double(window.picture().conversionCount())));
}

}  // namespace ostrel
