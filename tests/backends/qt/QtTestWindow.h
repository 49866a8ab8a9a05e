#pragma once

#include "backends/qt/window/QtWindowView.h"
#include "platform/uikit/view/UIWindow.h"

#include <functional>
#include <memory>
#include <QColor>
#include <QImage>
#include <QQuickWindow>
#include <vector>

namespace ostrel::test {

/// A view to be mounted, with its children.
struct Spec {
    ViewState state;
    std::vector<Spec> children;
};

/// A plain rectangle.
Spec box(CGRect frame, UIColor color, std::vector<Spec> children = {});
/// A rectangle that is painted as one picture with its children.
Spec surface(CGRect frame, UIColor color, std::vector<Spec> children = {});

/// Waits until `isDone`, at most five seconds, while events are handled.
bool waitUntil(const std::function<bool()>& isDone);

/// A window of 200 by 200 points on the offscreen platform. It shows a UIWindow, or the views that a test mounts.
class QtTestWindow {
public:
    QtTestWindow() : QtTestWindow(nullptr) {}
    explicit QtTestWindow(std::shared_ptr<UIWindow> uiWindow);

    /// Mounts `root` as the whole tree, in the first transaction; returns the tags in the order of the tree.
    std::vector<ViewTag> mount(const Spec& root);
    void mount(std::vector<Mutation> mutations);
    /// Creates and inserts a subtree; adds its tags in the order of the tree.
    static void add(std::vector<Mutation>& mutations, const Spec& spec, ViewTag parent, std::size_t index,
                    std::vector<ViewTag>& tags);
    /// Waits until all changes are shown, and grabs the window's picture.
    QImage grab();
    /// The colour of the last grabbed picture at a point.
    QColor at(double x, double y) const;
    double scale() const { return window_.effectiveDevicePixelRatio(); }
    QtWindowView& view() { return *view_; }
    QQuickWindow& window() { return window_; }

private:
    QQuickWindow window_;
    std::unique_ptr<QtWindowView> view_;
    std::uint64_t number_ = 0;
    QImage grabbed_;
};

/// True when no component differs by more than `tolerance`.
bool isNear(const QColor& a, const QColor& b, int tolerance = 3);

}  // namespace ostrel::test
