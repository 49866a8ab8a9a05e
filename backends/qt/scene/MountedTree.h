#pragma once

#include "backends/qt/scene/Surface.h"
#include "platform/uikit/mounting/Mounting.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ostrel {

enum class MountRole : std::uint8_t {
    /// Outside of any surface: shown by nodes of its own.
    structural,
    /// The root of a surface.
    surface,
    /// A part of the picture of a surface above the view.
    painted,
};

/// One view as the backend knows it.
struct MountedView {
    ViewTag tag = 0;
    std::shared_ptr<const ViewState> state;
    MountedView* parent = nullptr;
    /// Back to front.
    std::vector<MountedView*> children;
    MountRole role = MountRole::structural;
    /// What the view itself shows; valid while `pictureDirty` is false.
    LookKind look = LookKind::none;
    /// The view's own look is out of date. Not used in the role `painted`.
    bool pictureDirty = true;
    /// The order of the children's nodes may be out of date.
    bool childrenDirty = false;
    /// The view is painted with a surface, but the view or one below it also has nodes of its own.
    bool hasLive = false;
    /// The view's content has been scrolled at least once.
    bool scrolls = false;
    /// The view has nodes, or gets them with the next synchronisation.
    bool shown = false;
    /// In a surface: the view or one below it shows a player.
    bool holdsPlayer = false;
    /// The view is in front of a player of its surface, so that the view has a picture of its own.
    bool isInFront = false;
    /// The view waits for the next synchronisation with the scene graph.
    bool queued = false;
    /// The point of the content from which the children's nodes are placed.
    CGPoint base;
    std::unique_ptr<Surface> surface;
    /// The frame that a player shows.
    QImage video;
    /// The image that was painted last; painted again while its successor is being decoded.
    std::shared_ptr<const UIImage> lastImage;
    /// The decoded picture of `lastImage`, when it was decoded on the decoding thread.
    QImage lastPicture;
    NodeValues want, have;
    ViewNodes nodes;
};

/// The mounted views, changed by the window's transactions. Main thread.
///
/// A player within a surface is shown above the surface's picture. Views of the same surface that are in front of the
/// player therefore become surfaces of their own for as long as the player is there.
class MountedTree final {
public:
    class Observer {
    public:
        virtual ~Observer() = default;
        /// The view leaves its parent with all views below it: their nodes have to go.
        virtual void viewWillLeave(MountedView& view) = 0;
        virtual void viewWillBeDestroyed(MountedView& view) = 0;
        virtual void contentDidScroll() = 0;
    };

    explicit MountedTree(Observer& observer) : observer_(observer) {}

    /// Skips mutations that do not fit the tree; builds with assertions stop there.
    void apply(const MountingTransaction& transaction);
    void clear();
    MountedView* root() const { return root_; }
    MountedView* find(ViewTag tag) const;
    const std::unordered_map<ViewTag, std::unique_ptr<MountedView>>& views() const { return views_; }
    /// Text inputs that have the focus; at most one in a correct tree.
    const std::vector<ViewTag>& focusedInputs() const { return focusedInputs_; }
    /// Marks the picture dirty in which `view` is painted: its own, or that of the surface around it.
    static void markPictureDirty(MountedView& view);

private:
    void create(ViewTag tag, std::shared_ptr<const ViewState> state);
    void insert(ViewTag parent, ViewTag tag, std::size_t index);
    void remove(ViewTag parent, ViewTag tag, std::size_t index);
    void update(const Mutation& mutation);
    void destroy(ViewTag tag);
    void assignRoles(MountedView& view);
    void arrangeAroundPlayers(MountedView& changed);
    void liftFromPlayers(MountedView& parent);
    void noteFocus(const MountedView& view);
    void noteContent(const MountedView& view);
    void markBlursAbove(const MountedView& changed);

    Observer& observer_;
    std::unordered_map<ViewTag, std::unique_ptr<MountedView>> views_;
    MountedView* root_ = nullptr;
    std::vector<ViewTag> focusedInputs_;
    std::vector<ViewTag> players_, blurs_;
};

}  // namespace ostrel
