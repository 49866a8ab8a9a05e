#pragma once

#include "backends/qt/paint/PaintPool.h"
#include "backends/qt/paint/PictureStore.h"
#include "backends/qt/scene/MountedTree.h"
#include "backends/qt/scene/SpinnerPictures.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

QT_BEGIN_NAMESPACE
class QQuickWindow;
QT_END_NAMESPACE

namespace ostrel {

class VideoPicture;

/// Turns the mounted views into pictures and nodes: finds the visible views, gives their surfaces to the painting
/// threads, the nearest first, and keeps one small tree of nodes that moves, fades and clips the pictures.
///
/// A surface's picture is kept while the surface is within two screens of the viewport, all pictures together up to
/// 64 MiB (visible ones always stay). A surface within a surface is shown above the picture of the outer one. Round
/// corners are cut in the pictures; surfaces and live views below a rounded view are clipped to its rectangle.
///
/// A blur within a surface blurs what the surface has painted beneath the blur. A blur elsewhere blurs its superview
/// and the views behind itself, and is painted again when these change. Spinners, videos and text under edit do not
/// show through a blur.
///
/// Main thread, but for `synchronise`, which runs while the main thread is stopped.
class SceneComposer final : private MountedTree::Observer {
public:
    struct Statistics {
        /// Pictures of bands that were painted, and display lists that were taken, since the start.
        std::uint64_t bandsPainted = 0, listsTaken = 0;
        /// Pictures held now.
        std::size_t pictures = 0, pictureBytes = 0;
        std::size_t mountedViews = 0;
        /// Views whose nodes the last synchronisation changed.
        std::size_t nodesChanged = 0;
    };

    /// `workFinished` is called from any thread when painted or decoded pictures wait for `prepare`.
    explicit SceneComposer(std::function<void()> workFinished);
    ~SceneComposer() override;

    void mount(const MountingTransaction& transaction);
    /// Forgets all views.
    void reset();
    void setViewport(CGSize size, double scale);
    /// Finds the visible views and gives them to the painting threads. Waits for visible pictures up to 8 ms, before
    /// the first frame up to 100 ms, and not at all while content scrolls. `now`: monotonic seconds. True when nodes
    /// have to change.
    bool prepare(double now);
    /// Changes the nodes below `root` and returns `root`; null makes a new root with all nodes.
    QSGNode* synchronise(QSGNode* root, QQuickWindow& window);

    /// All visible pictures are up to date.
    bool isSettled() const;
    /// Takes the pictures that the painting threads have finished. False when none of them is visible, so that they can
    /// wait for the next frame.
    bool takeFinishedWork() { return collectResults() || !videos_.empty(); }
    /// The content of a view has scrolled within the last 0.15 seconds before `now`.
    bool isScrolling(double now) const { return now - lastScroll_ < 0.15; }
    /// Seconds between two phases of the turning spinners; 0 when none turns.
    double spinnerInterval() const;
    /// A visible view rotates: each frame of the display shows another angle.
    bool turnsViews() const { return viewsTurn_; }
    void setReduceMotion(bool reduce) { reduceMotion_ = reduce; }
    const MountedTree& tree() const { return tree_; }
    /// The frame of a view in the window, without transforms; `clip` becomes the part of the window to which the view's
    /// ancestors clip it.
    CGRect frameInWindow(const MountedView& view, CGRect& clip, double& alpha) const;
    Statistics statistics() const;

private:
    struct Region {
        double x0, y0, x1, y1;
        bool intersects(const Region& o) const { return x0 < o.x1 && o.x0 < x1 && y0 < o.y1 && o.y0 < y1; }
        double distance(const Region& o) const;
    };
    /// What the ancestors of a view decide for the view.
    struct Place {
        // The origin of the parent's content in the window.
        double originX, originY;
        // The point of that content from which nodes are placed.
        double baseX, baseY;
        // The remainder from rounding the parent's position to pixels.
        double restX, restY;
        Region clip;
        // No ancestor has a transform, so that it is known whether the view is visible.
        bool isExact;
        // The one colour behind the view; null when it is not known.
        const UIColor* ground;
        // Round corners to which the view is clipped, in the window.
        const CornerClip* corners = nullptr;
    };

    void viewWillLeave(MountedView& view) override;
    void viewWillBeDestroyed(MountedView& view) override;
    void contentDidScroll() override { scrolled_ = true; }

    void walkTree();
    bool walk(MountedView& view, const Place& place);
    bool walkChildren(MountedView& view, const Place& place, const Region& frame, bool isExact, double restX,
                      double restY);
    void hide(MountedView& view);
    void queue(MountedView& view);

    /// Which views below a view come into its display list.
    enum class Below : std::uint8_t { painted, everything };

    void refreshLook(MountedView& view);
    LookKind preparePicture(MountedView& view, const Place& place, const Region& frame, bool isExact);
    void takeList(MountedView& view, const Place& place);
    void addEntries(DisplayList& list, Surface& surface, MountedView& view, bool isRoot, CGRect* overflow,
                    CGPoint origin, Below below = Below::painted);
    void takeBeneath(DisplayList& list, Surface& surface, const MountedView& blur);
    void divideIntoBands(Surface& surface, QSize pixels);
    bool isAlone(const MountedView& view) const;
    bool prepareRotation(MountedView& view, const Place& place, const Region& frame);
    void prepareSpinner(MountedView& view);
    bool prepareVideo(MountedView& view, const Place& place, const Region& frame, bool isExact);
    void hideVideos();
    bool collectResults();
    void dropDistantPictures();
    double snap(double value) const;

    const std::function<void()> workFinished_;
    PictureStore store_;
    SpinnerPictures spinners_;
    MountedTree tree_;
    PaintPool pool_;
    CGSize viewport_;
    double scale_ = 1;
    std::uint64_t lastVersion_ = 0;
    std::vector<MountedView*> queue_;
    std::vector<QSGNode*> doomed_;
    // Visible in the last walk.
    std::vector<std::shared_ptr<VideoPicture>> videos_;
    double now_ = 0, lastScroll_ = -1e9;
    bool scrolled_ = false;
    bool reduceMotion_ = false;
    // A visible spinner turns.
    bool turning_ = false;
    // A visible view rotates.
    bool viewsTurn_ = false;
    bool everythingLost_ = false;
    // A frame has been made.
    bool hasShown_ = false;
    // Visible bands whose picture is out of date.
    int waiting_ = 0;
    // Jobs given to the painting threads.
    int outstanding_ = 0;
    // A visible surface waits for a picture that is being decoded.
    bool missesPictures_ = false;
    int walksSinceTrim_ = 0;
    Statistics statistics_;
};

}  // namespace ostrel
