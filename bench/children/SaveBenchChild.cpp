#include "article/editor/UIArticleEditViewController.h"
#include "article/records/ArticleNotifications.h"
#include "backends/qt/QtPlatform.h"
#include "bench/support/BenchChild.h"
#include "bench/support/FrameMeter.h"
#include "bench/support/ListBenchWindow.h"
#include "bench/support/ProcessMeter.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "serverframework/HttpServerFramework.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <unistd.h>

namespace ostrel {

namespace {

/// Seconds.
constexpr double longestSave = 300;

/// A window with the empty own list of a new user and, pushed over it, an editor filled with `images`, over a real
/// server.
class SaveWindow final {
public:
    explicit SaveWindow(const std::string& address)
        : framework_(HttpServerFramework::create({.baseAddress = address, .mediaCacheFolder = ""})),
          bench_(framework_, 0, true) {
        NSNotificationCenter::defaultCenter().addObserver(this, NOTIFICATION_KEY_NEW_ARTICLE,
                                                          [this](const NSNotification&) { isSaved_ = true; });
    }
    ~SaveWindow() {
        NSNotificationCenter::defaultCenter().removeObserver(this);
        FrameMeter::waitFor([] { return NSThread::runningCount() == 0; }, 5);
    }

    bool open(UIArticleEditViewController::Images images) {
        if (!framework_) return false;
        bool signedUp = false;
        framework_->signUp("Bench " + std::to_string(::getpid()), "long enough",
                           [&](const auto& user, const auto&) { signedUp = user != nullptr; });
        if (!FrameMeter::waitFor([&] { return signedUp; }, 20)) return false;
        navigation_ = make<UINavigationController>(bench_.list().shared_from_this());
        bench_.root().setRootViewController(navigation_);
        if (!bench_.open()) return false;
        editor_ = make<UIArticleEditViewController>(std::move(images), "A title", "A text.", false);
        navigation_->pushViewController(editor_, true);
        return bench_.settle();
    }
    /// Clicks "POST" as a user would; false when there is no such button.
    bool post() {
        const auto button = editor_->navigationItem().rightBarButtonItem()->view().lock();
        if (!button) return false;
        const CGRect frame = button->convertRectToView(button->bounds(), nullptr);
        const QPointF point(frame.midX(), frame.midY());
        for (const auto type : {QEvent::MouseButtonPress, QEvent::MouseButtonRelease}) {
            const auto held = type == QEvent::MouseButtonPress ? Qt::LeftButton : Qt::NoButton;
            QMouseEvent event(type, point, bench_.window().mapToGlobal(point), Qt::LeftButton, held, {});
            QCoreApplication::sendEvent(&bench_.window(), &event);
        }
        return true;
    }
    bool isSaved() const { return isSaved_; }
    /// The editor has closed, and the list has the row of the new article.
    bool hasRow() {
        return navigation_->topViewController().get() == &bench_.list() && bench_.list().view()->window() &&
               bench_.table().cellForRowAtIndexPath({0, 0}) && bench_.view().hasPaintedEverything();
    }
    ListBenchWindow& bench() { return bench_; }

private:
    std::shared_ptr<HttpServerFramework> framework_;
    ListBenchWindow bench_;
    std::shared_ptr<UINavigationController> navigation_;
    std::shared_ptr<UIArticleEditViewController> editor_;
    bool isSaved_ = false;
};

/// Seconds from the click to the first frame that shows the row; negative when it failed.
double timeToRow(SaveWindow& window) {
    QElapsedTimer since;
    double shown = -1;
    const auto connection = QObject::connect(&window.bench().window(), &QQuickWindow::frameSwapped, [&] {
        if (shown < 0 && window.hasRow()) shown = static_cast<double>(since.nsecsElapsed()) / 1e9;
    });
    since.start();
    const bool isPosted = window.post();
    FrameMeter::waitFor([&] { return !isPosted || shown >= 0; }, longestSave);
    QObject::disconnect(connection);
    return shown;
}

/// Seconds from the click until the article was read back, or the seconds of the longest turn of the main loop in that
/// time.
double savePictures(SaveWindow& window, bool asksForTurns) {
    // Wakes the event loop, so that no turn contains a long wait.
    QTimer tick;
    tick.start(10);
    double longest = 0;
    QElapsedTimer since;
    since.start();
    if (!window.post()) return -1;
    while (!window.isSaved() && static_cast<double>(since.elapsed()) < longestSave * 1000) {
        const double before = threadSeconds();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        longest = std::max(longest, threadSeconds() - before);
    }
    if (!window.isSaved()) return -1;
    return asksForTurns ? longest : static_cast<double>(since.nsecsElapsed()) / 1e9;
}

}  // namespace

int runSaveChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 5) return 2;
    const std::string what = argv[3], address = argv[4];
    UIArticleEditViewController::Images images;
    for (int i = 0; argc > 6 && i < std::atoi(argv[6]); ++i) {
        images.push_back(UIImage::imageWithData(Data::mapFile(argv[5] + ("/" + std::to_string(i)) + ".jpg")));
        if (!images.back()) return 1;
    }
    bool hasFailed = false;
    setLogSink([&](std::string_view line) { hasFailed = hasFailed || line.find("error") != line.npos; });
    double measured = -1;
    {
        SaveWindow window(address);
        if (window.open(std::move(images)))
            measured = what == "empty" ? timeToRow(window) : savePictures(window, what == "turn");
    }
    setLogSink(nullptr);
    if (measured < 0 || hasFailed) return 1;
    std::printf("%.9g\n", measured);
    return 0;
}

}  // namespace ostrel
