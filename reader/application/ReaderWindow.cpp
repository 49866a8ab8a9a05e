#include "reader/application/ReaderWindow.h"

#include "backends/qt/window/QtWindowView.h"
#include "platform/uikit/screens/UIViewController.h"

namespace ostrel {

ReaderWindow::ReaderWindow(const std::string& title, QSize size, QSize leastSize)
    : rootView_(make<UIWindow>(CGSize{static_cast<CGFloat>(size.width()), static_cast<CGFloat>(size.height())})),
      quickWindow_(std::make_unique<QQuickWindow>()),
      view_(new QtWindowView(rootView_, quickWindow_->contentItem())) {
    quickWindow_->setTitle(QString::fromStdString(title));
    quickWindow_->resize(size);
    quickWindow_->setMinimumSize(leastSize);
    view_->setSize(QSizeF(quickWindow_->size()));
    QObject::connect(quickWindow_.get(), &QWindow::widthChanged, view_,
                     [view = view_](int width) { view->setWidth(width); });
    QObject::connect(quickWindow_.get(), &QWindow::heightChanged, view_,
                     [view = view_](int height) { view->setHeight(height); });
}

ReaderWindow::~ReaderWindow() {
    rootView_->setRootViewController(nullptr);
    quickWindow_.reset();
}

void ReaderWindow::setRootViewController(const std::shared_ptr<UIViewController>& root) {
    rootView_->setRootViewController(root);
}

void ReaderWindow::bringToFront() {
    quickWindow_->show();
    quickWindow_->raise();
    quickWindow_->requestActivate();
}

}  // namespace ostrel
