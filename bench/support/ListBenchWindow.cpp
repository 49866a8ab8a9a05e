#include "bench/support/ListBenchWindow.h"

#include "bench/support/FrameMeter.h"

#include <QCoreApplication>
#include <QDir>

namespace ostrel {

ListBenchWindow::ListBenchWindow(std::size_t count, bool own)
    : ListBenchWindow(std::make_shared<BenchServer>(count), count, own) {}

ListBenchWindow::ListBenchWindow(std::shared_ptr<OstrelServerFramework> framework, std::size_t count, bool own)
    : count_(count) {
    const std::string path =
        QDir(QCoreApplication::applicationDirPath() + "/../share/ostrel-article").canonicalPath().toStdString();
    NSBundle::setMainBundlePath(path);
    NSBundle::registerBundle(OstrelArticleBundleIdentifier, path);
    OstrelServerFramework::install(std::move(framework));
    // On the Mac idiom the list has no refresh control, whose animation would run during the measurement.
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiom::mac);
    root_ = make<UIWindow>(CGSize{width, height});
    window_ = std::make_unique<QQuickWindow>();
    window_->setColor(QColor(0xF2, 0xF3, 0xF7));
    window_->resize(width, height);
    view_ = new QtWindowView(root_);
    view_->setParentItem(window_->contentItem());
    view_->setSize(QSizeF(width, height));
    list_ = make<UIArticleListTableViewController>();
    list_->setIsMySelfOnly(own);
    root_->setRootViewController(list_);
}

ListBenchWindow::~ListBenchWindow() {
    root_->setRootViewController(nullptr);
    list_.reset();
    window_.reset();
    root_.reset();
    OstrelServerFramework::install(nullptr);
}

bool ListBenchWindow::open() {
    window_->show();
    return FrameMeter::waitFor([&] { return list_->articlesArray().size() == count_; }, 60) && settle();
}

bool ListBenchWindow::settle(double seconds) {
    int quiet = 0;
    return FrameMeter::waitFor([&] { return (quiet = view_->isSettled() ? quiet + 1 : 0) > 20; }, seconds);
}

}  // namespace ostrel
