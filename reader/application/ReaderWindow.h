#pragma once

#include "platform/uikit/view/UIWindow.h"

#include <QQuickWindow>

#include <memory>
#include <string>

namespace ostrel {

class QtWindowView;
class UIViewController;

/// One window of the desktop that shows one tree of views. Shows an embedder how a QtWindowView is put into a
/// QQuickWindow and follows its size. Hidden at first. Main thread.
class ReaderWindow final {
public:
    /// `size` and `leastSize` in points.
    ReaderWindow(const std::string& title, QSize size, QSize leastSize);
    /// Takes the screens from the window before the window goes.
    ~ReaderWindow();

    void setRootViewController(const std::shared_ptr<UIViewController>& root);
    QQuickWindow& quickWindow() { return *quickWindow_; }
    UIWindow& rootView() { return *rootView_; }
    QtWindowView& view() { return *view_; }
    /// Shows the window, or brings it to the front.
    void bringToFront();

private:
    std::shared_ptr<UIWindow> rootView_;
    std::unique_ptr<QQuickWindow> quickWindow_;
    /// Owned by the window's content item.
    QtWindowView* view_;
};

}  // namespace ostrel
