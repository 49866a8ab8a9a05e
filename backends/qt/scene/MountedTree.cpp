#include "backends/qt/scene/MountedTree.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

namespace {

constexpr std::uint32_t ownPictureChanges = changedFrameSize | changedLayer | changedContent;
constexpr std::uint32_t visibleChanges = changedAll & ~changedAccessibility;

bool hasPaintedChildren(const MountedView& view) {
    return std::any_of(view.children.begin(), view.children.end(),
                       [](const MountedView* child) { return child->role == MountRole::painted; });
}

/// A view with a rotation of its own is one picture on a turning node, so it is a surface.
bool isSurfaceOfItsOwn(const ViewState& state) { return state.isSurface || state.rotation; }

/// Whether nodes of its own show `content`, as for spinners, players and text under edit. The picture of the surface
/// around such content does not depend on it.
bool isLive(const ViewContent& content) {
    if (std::holds_alternative<SpinnerContent>(content) || std::holds_alternative<PlayerContent>(content)) return true;
    const auto* input = std::get_if<TextInputContent>(&content);
    return input && !isPainted(*input);
}

/// Notes in each view of a surface whether the view or one below has a player.
bool noteHolders(MountedView& view) {
    view.holdsPlayer = std::holds_alternative<PlayerContent>(view.state->content);
    for (MountedView* child : view.children) view.holdsPlayer |= noteHolders(*child);
    return view.holdsPlayer;
}

void setMember(std::vector<ViewTag>& tags, ViewTag tag, bool isMember) {
    const auto found = std::find(tags.begin(), tags.end(), tag);
    if (isMember && found == tags.end()) {
        tags.push_back(tag);
    } else if (!isMember && found != tags.end()) {
        tags.erase(found);
    }
}

}  // namespace

void MountedTree::apply(const MountingTransaction& transaction) {
    for (const Mutation& mutation : transaction.mutations) {
        switch (mutation.type) {
        case Mutation::Type::create: create(mutation.tag, mutation.state); break;
        case Mutation::Type::insert: insert(mutation.parent, mutation.tag, mutation.index); break;
        case Mutation::Type::remove: remove(mutation.parent, mutation.tag, mutation.index); break;
        case Mutation::Type::update: update(mutation); break;
        case Mutation::Type::destroy: destroy(mutation.tag); break;
        }
    }
}

void MountedTree::clear() {
    if (root_) observer_.viewWillLeave(*root_);
    root_ = nullptr;
    focusedInputs_.clear();
    players_.clear();
    blurs_.clear();
    views_.clear();
}

MountedView* MountedTree::find(ViewTag tag) const {
    const auto found = views_.find(tag);
    return found == views_.end() ? nullptr : found->second.get();
}

void MountedTree::markPictureDirty(MountedView& view) {
    MountedView* owner = &view;
    while (owner->role == MountRole::painted && owner->parent) owner = owner->parent;
    owner->pictureDirty = true;
}

void MountedTree::create(ViewTag tag, std::shared_ptr<const ViewState> state) {
    assert(state && !find(tag));
    if (!state || find(tag)) return;
    auto view = std::make_unique<MountedView>();
    view->tag = tag;
    view->state = std::move(state);
    view->role = isSurfaceOfItsOwn(*view->state) ? MountRole::surface : MountRole::structural;
    if (!root_) root_ = view.get();
    noteFocus(*view);
    noteContent(*view);
    views_.emplace(tag, std::move(view));
}

void MountedTree::insert(ViewTag parentTag, ViewTag tag, std::size_t index) {
    MountedView* parent = find(parentTag);
    MountedView* view = find(tag);
    assert(parent && view && !view->parent && index <= parent->children.size());
    if (!parent || !view || view->parent || index > parent->children.size()) return;
    parent->children.insert(parent->children.begin() + static_cast<std::ptrdiff_t>(index), view);
    view->parent = parent;
    parent->childrenDirty = true;
    assignRoles(*view);
    if (parent->role != MountRole::structural) markPictureDirty(*parent);
    arrangeAroundPlayers(*view);
    markBlursAbove(*view);
}

void MountedTree::remove(ViewTag parentTag, ViewTag tag, std::size_t index) {
    MountedView* parent = find(parentTag);
    MountedView* view = find(tag);
    const bool fits = parent && view && index < parent->children.size() && parent->children[index] == view;
    assert(fits);
    if (!fits) return;
    observer_.viewWillLeave(*view);
    markBlursAbove(*view);
    if (parent->role != MountRole::structural) markPictureDirty(*parent);
    parent->children.erase(parent->children.begin() + static_cast<std::ptrdiff_t>(index));
    view->parent = nullptr;
    view->isInFront = false;
    assignRoles(*view);
    arrangeAroundPlayers(*parent);
}

void MountedTree::update(const Mutation& mutation) {
    MountedView* view = find(mutation.tag);
    assert(view && mutation.state);
    if (!view || !mutation.state) return;
    std::uint32_t changes = mutation.changes;
    const bool wasSurface = isSurfaceOfItsOwn(*view->state);
    const bool showed = std::holds_alternative<PlayerContent>(view->state->content);
    if (isLive(view->state->content) && view->state->content.index() == mutation.state->content.index() &&
        isLive(mutation.state->content)) {
        changes &= ~changedContent;
    }
    const bool startsOrEndsTurning = !view->state->rotation != !mutation.state->rotation;
    view->state = mutation.state;
    if (wasSurface != isSurfaceOfItsOwn(*view->state)) {
        observer_.viewWillLeave(*view);
        if (view->parent) view->parent->childrenDirty = true;
        assignRoles(*view);
        if (view->parent && view->parent->role != MountRole::structural) markPictureDirty(*view->parent);
    }
    if (changes & visibleChanges) markBlursAbove(*view);
    if (mutation.changes & changedContent) {
        noteFocus(*view);
        noteContent(*view);
        const bool shows = std::holds_alternative<PlayerContent>(view->state->content);
        if (showed != shows) arrangeAroundPlayers(*view);
    }
    if (view->role == MountRole::painted) {
        if (changes & visibleChanges) markPictureDirty(*view);
    } else {
        if ((changes & ownPictureChanges) || startsOrEndsTurning) view->pictureDirty = true;
        if (changes & changedBoundsOrigin) {
            if (view->role == MountRole::surface && hasPaintedChildren(*view)) view->pictureDirty = true;
            observer_.contentDidScroll();
        }
    }
}

void MountedTree::destroy(ViewTag tag) {
    const auto found = views_.find(tag);
    assert(found != views_.end());
    if (found == views_.end()) return;
    MountedView& view = *found->second;
    observer_.viewWillLeave(view);
    observer_.viewWillBeDestroyed(view);
    if (view.parent) std::erase(view.parent->children, &view);
    for (MountedView* child : view.children) {
        observer_.viewWillLeave(*child);
        child->parent = nullptr;
    }
    std::erase(focusedInputs_, tag);
    std::erase(players_, tag);
    std::erase(blurs_, tag);
    if (root_ == &view) root_ = nullptr;
    views_.erase(found);
}

void MountedTree::assignRoles(MountedView& view) {
    const bool inSurface = view.parent && view.parent->role != MountRole::structural;
    const bool isApart = isSurfaceOfItsOwn(*view.state) || (inSurface && view.isInFront);
    const MountRole role = isApart ? MountRole::surface : inSurface ? MountRole::painted : MountRole::structural;
    view.pictureDirty = true;
    if (role == MountRole::painted) view.surface.reset();
    view.role = role;
    for (MountedView* child : view.children) assignRoles(*child);
}

void MountedTree::arrangeAroundPlayers(MountedView& changed) {
    MountedView* top = &changed;
    while (top->parent && top->parent->role != MountRole::structural) top = top->parent;
    if (top->role == MountRole::structural || (players_.empty() && !top->holdsPlayer)) return;
    const bool held = top->holdsPlayer;
    if (noteHolders(*top) || held) liftFromPlayers(*top);
}

void MountedTree::liftFromPlayers(MountedView& parent) {
    bool isInFront = false;
    for (MountedView* child : parent.children) {
        if (child->isInFront != isInFront) {
            observer_.viewWillLeave(*child);
            child->isInFront = isInFront;
            assignRoles(*child);
            parent.childrenDirty = true;
            markPictureDirty(parent);
        }
        liftFromPlayers(*child);
        isInFront |= child->holdsPlayer;
    }
}

void MountedTree::noteFocus(const MountedView& view) {
    const auto* input = std::get_if<TextInputContent>(&view.state->content);
    setMember(focusedInputs_, view.tag, input && input->focused);
}

void MountedTree::noteContent(const MountedView& view) {
    const ViewContent& content = view.state->content;
    setMember(players_, view.tag, std::holds_alternative<PlayerContent>(content));
    setMember(blurs_, view.tag, std::holds_alternative<BlurContent>(content));
}

void MountedTree::markBlursAbove(const MountedView& changed) {
    for (const ViewTag tag : blurs_) {
        MountedView* const blur = find(tag);
        // A blur within a surface is painted again with that surface.
        if (!blur || !blur->parent || blur->role == MountRole::painted) continue;
        const MountedView* view = &changed;
        while (view && view != blur->parent && view != blur) view = view->parent;
        if (view == blur->parent || &changed == blur) blur->pictureDirty = true;
    }
}

}  // namespace ostrel
