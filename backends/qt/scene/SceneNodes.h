#pragma once

#include "backends/qt/scene/MountedTree.h"
#include "backends/qt/scene/SpinnerPictures.h"

#include <vector>

QT_BEGIN_NAMESPACE
class QQuickWindow;
QT_END_NAMESPACE

namespace ostrel {

/// Brings the scene graph's nodes to what the mounted views want. Used while the scene graph synchronises: on its
/// thread, with the main thread stopped.
class SceneNodes final {
public:
    SceneNodes(QQuickWindow& window, double scale, SpinnerPictures& spinners)
        : window_(window), scale_(scale), spinners_(spinners) {}

    /// Makes and changes the nodes of one view. Views whose parent has to order its children anew are added to
    /// `unordered`.
    void apply(MountedView& view, std::vector<MountedView*>& unordered);
    /// Puts the nodes of the children into the parent's, in the order of the views.
    static void orderChildren(MountedView& parent);
    /// Forgets the nodes of `view` and all below it, which are gone or about to go.
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
