#include "reader/ReaderApplication.h"

#include "article/OstrelArticle.h"
#include "backends/ffmpeg/FfmpegMediaBackend.h"
#include "backends/qt/window/QtWindowView.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/Text.h"
#include "platform/media/MediaLibrary.h"
#include "platform/uikit/view/UIWindow.h"
#include "reader/ReaderLogController.h"
#include "reader/ReaderText.h"
#include "serverframework/HttpServerFramework.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>

#include <cstdio>

namespace ostrel {

namespace {

/// How long the end waits for threads that are about to send a request, which takes them microseconds. The one of a save
/// under way goes on until the process ends.
constexpr double secondsForThreads = 1;
/// Another reader of the same user may still be sending one.
constexpr int daysClipsAreKept = 2;
constexpr std::string_view loadFailure = "request articles error:";

CGSize windowSize(const ReaderOptions& options) {
    CGSize size{390, 780};
    if (options.idiom == UIUserInterfaceIdiom::pad) size = {1024, 768};
    if (options.idiom == UIUserInterfaceIdiom::mac) size = {1080, 740};
    if (options.width) size.width = options.width;
    if (options.height) size.height = options.height;
    return size;
}

}  // namespace

ReaderApplication::ReaderApplication(const ReaderOptions& options, std::string serverAddress,
                                     std::shared_ptr<SessionStore> sessionStore)
    : options_(options), serverAddress_(std::move(serverAddress)), sessionStore_(std::move(sessionStore)) {}

ReaderApplication::~ReaderApplication() {
    setLogSink({});
    closeLogWindow();
    if (window_) window_->setRootViewController(nullptr);
    root_.reset();
    quickWindow_.reset();
    window_.reset();
    // Rows send their requests from threads, which still look the framework up.
    NSThread::waitForAll(secondsForThreads);
    OstrelServerFramework::install(nullptr);
    MediaBackend::install(nullptr);
    MediaLibrary::install(nullptr);
}

bool ReaderApplication::prepareHome(std::string* error) {
    const QDir documents(QString::fromStdString(options_.homeFolder) + "/Documents");
    if (!documents.mkpath(".")) {
        if (error) *error = "The folder " + documents.path().toStdString() + " cannot be made.";
        return false;
    }
    // Clips of articles that were posted, or given up, by now.
    const QDateTime old = QDateTime::currentDateTime().addDays(-daysClipsAreKept);
    for (const QFileInfo& file : documents.entryInfoList(QDir::Files)) {
        if (file.lastModified() < old && file.fileName() != "error.html") QFile::remove(file.filePath());
    }
    setHomeDirectory(options_.homeFolder);
    return true;
}

void ReaderApplication::installMedia() {
    MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
    const auto folders = [](const std::string& own, QStandardPaths::StandardLocation system) {
        if (!own.empty()) return std::vector{own};
        std::vector<std::string> paths;
        for (const QString& path : QStandardPaths::standardLocations(system)) {
            // Where the system has no such folder it names the home directory.
            if (QDir(path) != QDir::home()) paths.push_back(QFile::encodeName(path).toStdString());
        }
        return paths;
    };
    MediaLibrary::install(std::make_shared<const MediaLibrary>(
        MediaLibrary::Folders{.pictures = folders(options_.picturesFolder, QStandardPaths::PicturesLocation),
                              .clips = folders(options_.videosFolder, QStandardPaths::MoviesLocation)}));
}

bool ReaderApplication::findResources(std::string* error) {
    // Beside the programs in a build and in an installation alike.
    const QString folder = QCoreApplication::applicationDirPath() + "/../share/ostrel-article";
    if (!QFileInfo(folder).isDir()) {
        if (error) *error = "The resources are missing: " + QDir::cleanPath(folder).toStdString() + ".";
        return false;
    }
    const std::string path = QDir(folder).canonicalPath().toStdString();
    NSBundle::setMainBundlePath(path);
    NSBundle::registerBundle(OstrelArticleBundleIdentifier, path);
    return true;
}

bool ReaderApplication::open(std::string* error) {
    if (!findResources(error) || !prepareHome(error)) return false;
    framework_ = HttpServerFramework::create(
        {.baseAddress = serverAddress_, .userAgent = "OstrelReader/1.0", .sessionStore = sessionStore_},
        error);
    if (!framework_) return false;
    OstrelServerFramework::install(framework_);
    UIDevice::currentDevice().setUserInterfaceIdiom(options_.idiom);
    installMedia();

    const CGSize size = windowSize(options_);
    window_ = make<UIWindow>(size);
    quickWindow_ = std::make_unique<QQuickWindow>();
    quickWindow_->setTitle(QString::fromStdString(readerText("Ostrel Reader")));
    quickWindow_->setColor(QColor(0xF2, 0xF3, 0xF7));
    quickWindow_->resize(static_cast<int>(size.width), static_cast<int>(size.height));
    quickWindow_->setMinimumSize({320, 400});
    view_ = new QtWindowView(window_);
    view_->setParentItem(quickWindow_->contentItem());
    view_->setSize(QSizeF(quickWindow_->size()));
    QObject::connect(quickWindow_.get(), &QWindow::widthChanged, view_,
                     [this] { view_->setWidth(quickWindow_->width()); });
    QObject::connect(quickWindow_.get(), &QWindow::heightChanged, view_,
                     [this] { view_->setHeight(quickWindow_->height()); });

    root_ = make<ReaderRootController>(framework_, log_);
    if (options_.idiom == UIUserInterfaceIdiom::mac) root_->openLogWindow = [this] { showLogWindow(); };
    window_->setRootViewController(root_);
    // The module reports a failed load to the log alone; the reader tells its user.
    setLogSink([weak = std::weak_ptr(root_), log = log_](std::string_view line) {
        log->append(line);
        std::fprintf(stderr, "%.*s\n", static_cast<int>(line.size()), line.data());
        if (!line.starts_with(loadFailure)) return;
        RunLoop::main().perform([weak, reason = std::string(line.substr(loadFailure.size()))] {
            if (const auto root = weak.lock()) {
                root->showNotice(
                    replacingOccurrences(readerText("The articles could not be loaded. %@"), "%@", reason));
            }
        });
    });
    framework_->restoreSession([](const auto&, const auto&) {});
    quickWindow_->show();
    return true;
}

void ReaderApplication::showLogWindow() {
    if (logWindow_) {
        logWindow_->show();
        logWindow_->raise();
        logWindow_->requestActivate();
        return;
    }
    constexpr QSize size(760, 420);
    logView_ = make<UIWindow>(CGSize{double(size.width()), double(size.height())});
    logView_->setRootViewController(
        make<UINavigationController>(make<ReaderLogController>(log_, std::function<void()>())));
    logWindow_ = std::make_unique<QQuickWindow>();
    logWindow_->setTitle(QString::fromStdString(readerText("Log - Ostrel Reader")));
    logWindow_->resize(size);
    logWindow_->setMinimumSize({320, 200});
    auto* const view = new QtWindowView(logView_, logWindow_->contentItem());
    view->setSize(QSizeF(size));
    QObject::connect(logWindow_.get(), &QWindow::widthChanged, view,
                     [view](int width) { view->setWidth(width); });
    QObject::connect(logWindow_.get(), &QWindow::heightChanged, view,
                     [view](int height) { view->setHeight(height); });
    // In a later turn: the window is in the middle of closing.
    QObject::connect(logWindow_.get(), &QWindow::visibleChanged, quickWindow_.get(), [this](bool isVisible) {
        if (!isVisible) QTimer::singleShot(0, quickWindow_.get(), [this] { closeLogWindow(); });
    });
    // The log alone does not keep the application running.
    QObject::connect(quickWindow_.get(), &QWindow::visibleChanged, logWindow_.get(), [this](bool isVisible) {
        if (!isVisible) logWindow_->close();
    });
    logWindow_->show();
}

void ReaderApplication::closeLogWindow() {
    if (logView_) logView_->setRootViewController(nullptr);
    logWindow_.reset();
    logView_.reset();
}

void ReaderApplication::quitAfterFirstList() {
    QObject::connect(quickWindow_.get(), &QQuickWindow::frameSwapped, view_, [this] {
        if (root_->allArticles().articlesArray().empty() || !view_->hasPaintedEverything()) return;
        std::printf("first list painted\n");
        std::fflush(stdout);
        QCoreApplication::quit();
    });
}

}  // namespace ostrel
