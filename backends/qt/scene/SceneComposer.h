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

/// Turns the mounted views into pictures and nodes: decides which views are in sight, has surfaces painted by the
/// workers, nearest first, and keeps one small tree of nodes that moves, fades and clips them.
///
/// A surface's picture is kept while the surface is within two screens of sight, all pictures together up to 64 MiB (what
/// is in sight always stays). Surfaces are shown above the picture of the surface they are in. Rounded clipping is done
/// in pictures; surfaces and live views below a rounded view are clipped to its rectangle.
///
/// A blur within a surface blurs what the surface paints beneath it; one elsewhere, what its superview and the views
/// behind it paint, as often as that changes. Wheels, videos and text under edit are not seen through it.
///
/// Main thread, but for `synchronise`, which runs while the main thread is stopped.
class SceneComposer final : private MountedTree::Observer {
public:
    struct Statistics {
        std::uint64_t tilesPainted = 0;  ///< pictures made, in all
        std::uint64_t listsTaken = 0;    ///< display lists taken
        std::size_t pictures = 0;        ///< held now
        std::size_t pictureBytes = 0;    ///< held now
        std::size_t mountedViews = 0;
        std::size_t nodesChanged = 0;  ///< views whose nodes the last synchronisation changed
    };

    /// `workFinished` is called from any thread when painted or decoded pictures wait for `prepare`.
    explicit SceneComposer(std::function<void()> workFinished);
    ~SceneComposer() override;

    void mount(const MountingTransaction& transaction);
    /// Forgets all views.
    void reset();
    void setViewport(CGSize size, double scale);
    /// Finds what is in sight and has it painted. Waits for visible pictures up to 8 ms, before the first frame up to
    /// 100 ms, and not at all while content scrolls. `now` in monotonic seconds. True when nodes have to change.
    bool prepare(double now);
    /// Changes the nodes below `root` (null: everything is made anew) and returns it.
    QSGNode* synchronise(QSGNode* root, QQuickWindow& window);

    /// Everything in sight is painted as it is now.
    bool isSettled() const;
    /// Takes what the workers have finished. False: nothing of it is in sight, so that it can wait for the next frame.
    bool takeFinishedWork() { return collectResults() || !videos_.empty(); }
    /// The content of a view moved within the last moments before `now`.
    bool isScrolling(double now) const { return now - lastScroll_ < 0.15; }
    /// Seconds until a wheel turns on; 0: none turns.
    double spinnerInterval() const;
    /// A view in sight turns about itself: each frame of the display shows another angle.
    bool turnsViews() const { return viewsTurn_; }
    void setReduceMotion(bool reduce) { reduceMotion_ = reduce; }
    const MountedTree& tree() const { return tree_; }
    /// Where a view stands in the window, transforms left out; `clip` is the part of the window that its ancestors let
    /// through.
    CGRect frameInWindow(const MountedView& view, CGRect& clip, double& alpha) const;
    Statistics statistics() const;

private:
    struct Region {
        double x0, y0, x1, y1;
        bool intersects(const Region& o) const { return x0 < o.x1 && o.x0 < x1 && y0 < o.y1 && o.y0 < y1; }
        double distance(const Region& o) const;
    };
    /// What a view finds where it stands.
    struct Place {
        double originX, originY;  // where the parent's content begins, in the window
        double baseX, baseY;      // the point of it that nodes are placed from
        double restX, restY;      // what rounding to pixels left of the parent's position
        Region clip;
        bool isExact;           // no transform above: what is in sight can be told
        const UIColor* ground;  // the one colour behind the view, when it is known
        // Round corners that the view is clipped to, in the window.
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

    /// Which views below one come into its list.
    enum class Below : std::uint8_t { painted, everything };

    void refreshLook(MountedView& view);
    LookKind preparePicture(MountedView& view, const Place& place, const Region& frame, bool isExact);
    void takeList(MountedView& view, const Place& place);
    void addEntries(DisplayList& list, Surface& surface, MountedView& view, bool isRoot, CGRect* overflow,
                    CGPoint origin, Below below = Below::painted);
    void takeBeneath(DisplayList& list, Surface& surface, const MountedView& blur);
    void layTiles(Surface& surface, QSize pixels);
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
    std::vector<std::shared_ptr<VideoPicture>> videos_;  // in sight when last walked
    double now_ = 0, lastScroll_ = -1e9;
    bool scrolled_ = false;
    bool reduceMotion_ = false;
    bool turning_ = false;    // a wheel in sight turns
    bool viewsTurn_ = false;  // by their own rotation
    bool everythingLost_ = false;
    bool hasShown_ = false;        // a frame has been made
    int waiting_ = 0;              // tiles in sight that are not painted as they are now
    int outstanding_ = 0;          // jobs given to the painters
    bool missesPictures_ = false;  // in sight
    int walksSinceTrim_ = 0;
    Statistics statistics_;
};

}  // namespace ostrel
