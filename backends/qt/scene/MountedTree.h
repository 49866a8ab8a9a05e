#pragma once

#include "backends/qt/scene/Surface.h"
#include "platform/uikit/mounting/Mounting.h"

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <vector>

namespace ostrel {

enum class MountRole : std::uint8_t {
    structural,  ///< outside of any surface: shown by nodes of its own
    surface,     ///< the root of a surface
    painted,     ///< part of the picture of a surface above it
};

/// One view as the backend knows it.
struct MountedView {
    ViewTag tag = 0;
    std::shared_ptr<const ViewState> state;
    MountedView* parent = nullptr;
    std::vector<MountedView*> children;  // back to front
    MountRole role = MountRole::structural;
    LookKind look = LookKind::none;  ///< what it shows itself; known once its picture is not dirty
    bool pictureDirty = true;        ///< what it shows itself is out of date; not used while painted
    bool childrenDirty = false;      ///< the order of its children's nodes may be
    bool hasLive = false;      ///< painted with a surface, but itself or a view below has nodes of its own
    bool scrolls = false;      ///< its content has been moved once
    bool shown = false;        ///< has nodes, or gets them with the next synchronisation
    bool holdsPlayer = false;  ///< in a surface: a player is shown by it or a view below
    bool isInFront =
        false;            ///< stands in front of a player of its surface, so that it has a picture of its own
    bool queued = false;  ///< waits for the next synchronisation with the scene graph
    CGPoint base;         ///< the point of the content that its children's nodes are placed from
    std::unique_ptr<Surface> surface;
    QImage video;                              ///< what a player shows
    std::shared_ptr<const UIImage> lastImage;  ///< painted last; stands in while another one is being decoded
    QImage lastPicture;                        ///< of `lastImage`, when it was decoded apart
    NodeValues want, have;
    ViewNodes nodes;
};

/// The mounted views, kept as the transactions tell. Main thread.
///
/// A player within a surface is shown above the surface's picture. What stands in front of it in the same surface is
/// therefore made a surface of its own for as long as the player is there.
class MountedTree final {
public:
    class Observer {
    public:
        virtual ~Observer() = default;
        /// The view leaves its place, with all below it: what shows it has to go.
        virtual void viewWillLeave(MountedView& view) = 0;
        virtual void viewWillBeDestroyed(MountedView& view) = 0;
        virtual void contentDidScroll() = 0;
    };

    explicit MountedTree(Observer& observer) : observer_(observer) {}

    /// Steps that do not fit the tree are left out, and assert.
    void apply(const MountingTransaction& transaction);
    void clear();
    MountedView* root() const { return root_; }
    MountedView* find(ViewTag tag) const;
    const std::unordered_map<ViewTag, std::unique_ptr<MountedView>>& views() const { return views_; }
    /// Text inputs that have the focus; at most one in a correct tree.
    const std::vector<ViewTag>& focusedInputs() const { return focusedInputs_; }
    /// Marks the picture dirty that `view` is painted in, its own or that of the surface around it.
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
