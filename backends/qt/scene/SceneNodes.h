#pragma once

#include "backends/qt/scene/MountedTree.h"
#include "backends/qt/scene/SpinnerPictures.h"

#include <vector>

QT_BEGIN_NAMESPACE
class QQuickWindow;
QT_END_NAMESPACE

namespace ostrel {

/// Changes the scene graph's nodes to the values that the mounted views want. Used while the scene graph synchronises:
/// on the render thread, while the main thread is blocked.
class SceneNodes final {
public:
    SceneNodes(QQuickWindow& window, double scale, SpinnerPictures& spinners)
        : window_(window), scale_(scale), spinners_(spinners) {}

    /// Makes and changes the nodes of one view. Adds the parent to `unordered` when the order of its children's nodes
    /// must be restored.
    void apply(MountedView& view, std::vector<MountedView*>& unordered);
    /// Puts the children's nodes into the parent's container, in the z-order of the views.
    static void orderChildren(MountedView& parent);
    /// Forgets the nodes of `view` and of all views below it, which are deleted or about to be.
    static void forget(MountedView& view);

private:
    void build(MountedView& view);
    QSGNode* makeLook(MountedView& view);
    void placeLook(MountedView& view);
    void applySpinner(MountedView& view);
    void applyVideo(MountedView& view);

    QQuickWindow& window_;
    double scale_;
    SpinnerPictures& spinners_;
};

}  // namespace ostrel
