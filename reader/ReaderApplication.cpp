#include "reader/ReaderApplication.h"

#include "article/OstrelArticle.h"
#include "backends/qt/QtWindowView.h"
#include "ostrelserver/HttpServerFramework.h"
#include "platform/foundation/NSLog.h"
#include "platform/foundation/NSThread.h"
#include "platform/foundation/RunLoop.h"
#include "platform/foundation/Text.h"
#include "platform/uikit/UIWindow.h"
#include "reader/ReaderText.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

#include <cstdio>

namespace ostrel {

namespace {

/// How long the end waits for threads that are about to send a request, which takes them microseconds.
constexpr double secondsForThreads = 5;
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
    if (window_) window_->setRootViewController(nullptr);
    root_.reset();
    quickWindow_.reset();
    window_.reset();
    // Rows send their requests from threads, which still look the framework up.
    NSThread::waitForAll(secondsForThreads);
    OstrelServerFramework::install(nullptr);
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
    if (!findResources(error)) return false;
    framework_ = HttpServerFramework::create(
        {.baseAddress = serverAddress_, .userAgent = "OstrelReader/1.0", .sessionStore = sessionStore_},
        error);
    if (!framework_) return false;
    OstrelServerFramework::install(framework_);
    UIDevice::currentDevice().setUserInterfaceIdiom(options_.idiom);

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

    root_ = make<ReaderRootController>(framework_);
    window_->setRootViewController(root_);
    // The module reports a failed load to the log alone; the reader tells its user.
    setLogSink([weak = std::weak_ptr(root_)](std::string_view line) {
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

void ReaderApplication::quitAfterFirstList() {
    QObject::connect(quickWindow_.get(), &QQuickWindow::frameSwapped, view_, [this] {
        if (root_->allArticles().articlesArray().empty() || !view_->hasPaintedEverything()) return;
        std::printf("first list painted\n");
        std::fflush(stdout);
        QCoreApplication::quit();
    });
}

}  // namespace ostrel
