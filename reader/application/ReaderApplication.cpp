#include "reader/application/ReaderApplication.h"

#include "article/OstrelArticle.h"
#include "backends/qt/window/QtWindowView.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/media/MediaBackend.h"
#include "platform/media/MediaLibrary.h"
#include "reader/application/ReaderEnvironment.h"
#include "reader/screens/ReaderLogController.h"
#include "reader/services/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

namespace ostrel {

namespace {

/// How long the end waits for threads that are about to send a request, which takes them microseconds. The thread of a
/// save under way is not waited for: it ends with the process.
constexpr double secondsForThreads = 1;
constexpr QSize leastSize(320, 400), logSize(760, 420), leastLogSize(320, 200);

QSize windowSize(const ReaderOptions& options) {
    QSize size(390, 780);
    if (options.idiom == UIUserInterfaceIdiom::pad) size = {1024, 768};
    if (options.idiom == UIUserInterfaceIdiom::mac) size = {1080, 740};
    if (options.width) size.setWidth(options.width);
    if (options.height) size.setHeight(options.height);
    return size;
}

}  // namespace

ReaderApplication::ReaderApplication(const ReaderOptions& options, std::string serverAddress,
                                     std::shared_ptr<SessionStore> sessionStore)
    : options_(options), serverAddress_(std::move(serverAddress)), sessionStore_(std::move(sessionStore)) {}

ReaderApplication::~ReaderApplication() {
    setLogSink({});
    logWindow_.reset();
    if (window_) window_->setRootViewController(nullptr);
    root_.reset();
    window_.reset();
    // Rows send their requests from threads, which still look the framework up.
    NSThread::waitForAll(secondsForThreads);
    OstrelServerFramework::install(nullptr);
    MediaBackend::install(nullptr);
    MediaLibrary::install(nullptr);
}

bool ReaderApplication::open(std::string* error) {
    if (!installResources(error) || !prepareHome(options_.homeFolder, error)) return false;
    framework_ = HttpServerFramework::create(
        {.baseAddress = serverAddress_, .userAgent = "OstrelReader/1.0", .sessionStore = sessionStore_}, error);
    if (!framework_) return false;
    OstrelServerFramework::install(framework_);
    UIDevice::currentDevice().setUserInterfaceIdiom(options_.idiom);
    installMedia(options_);
    openWindow();
    setLogSink([log = log_](std::string_view line) {
        log->append(line);
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
    });
    framework_->restoreSession([](const auto&, const auto&) {});
    window_->quickWindow().show();
    return true;
}

void ReaderApplication::openWindow() {
    window_ = std::make_unique<ReaderWindow>(readerText("Ostrel Reader"), windowSize(options_), leastSize);
    window_->quickWindow().setColor(QColor(0xF2, 0xF3, 0xF7));
    root_ = make<ReaderRootController>(framework_, log_);
    if (options_.idiom == UIUserInterfaceIdiom::mac) root_->openLogWindow = [this] { showLogWindow(); };
    window_->setRootViewController(root_);
}

void ReaderApplication::showLogWindow() {
    if (logWindow_) {
        logWindow_->bringToFront();
        return;
    }
    logWindow_ = std::make_unique<ReaderWindow>(readerText("Log - Ostrel Reader"), logSize, leastLogSize);
    logWindow_->setRootViewController(
        make<UINavigationController>(make<ReaderLogController>(log_, std::function<void()>())));
    QQuickWindow* const main = &window_->quickWindow();
    QQuickWindow* const log = &logWindow_->quickWindow();
    // The object of a closed window is deleted in a later turn, because the window is still closing in this one.
    QObject::connect(log, &QWindow::visibleChanged, main, [this, main](bool isVisible) {
        if (!isVisible) QTimer::singleShot(0, main, [this] { logWindow_.reset(); });
    });
    // The main window takes the log's window along when it closes; the log alone does not keep the program running.
    QObject::connect(main, &QWindow::visibleChanged, log, [log](bool isVisible) {
        if (!isVisible) log->close();
    });
    log->show();
}

void ReaderApplication::quitAfterFirstList() {
    QObject::connect(&window(), &QQuickWindow::frameSwapped, &view(), [this] {
        if (root_->allArticles().articlesArray().empty() || !view().hasPaintedEverything()) return;
        std::printf("first list painted\n");
        std::fflush(stdout);
        QCoreApplication::quit();
    });
}

}  // namespace ostrel
