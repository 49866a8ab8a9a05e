#include "backends/qt/MountedTree.h"

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

/// Whether a surface that `content` belongs to looks the same without knowing about the change: spinners and text under
/// edit have nodes of their own.
bool isLive(const ViewContent& content) {
    if (std::holds_alternative<SpinnerContent>(content)) return true;
    const auto* input = std::get_if<TextInputContent>(&content);
    return input && !isPainted(*input);
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
    view->role = view->state->isSurface ? MountRole::surface : MountRole::structural;
    if (!root_) root_ = view.get();
    noteFocus(*view);
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
}

void MountedTree::remove(ViewTag parentTag, ViewTag tag, std::size_t index) {
    MountedView* parent = find(parentTag);
    MountedView* view = find(tag);
    const bool fits = parent && view && index < parent->children.size() && parent->children[index] == view;
    assert(fits);
    if (!fits) return;
    observer_.viewWillLeave(*view);
    if (parent->role != MountRole::structural) markPictureDirty(*parent);
    parent->children.erase(parent->children.begin() + static_cast<std::ptrdiff_t>(index));
    view->parent = nullptr;
    assignRoles(*view);
}

void MountedTree::update(const Mutation& mutation) {
    MountedView* view = find(mutation.tag);
    assert(view && mutation.state);
    if (!view || !mutation.state) return;
    std::uint32_t changes = mutation.changes;
    const bool wasSurface = view->state->isSurface;
    if (isLive(view->state->content) && view->state->content.index() == mutation.state->content.index() &&
        isLive(mutation.state->content)) {
        changes &= ~changedContent;
    }
    view->state = mutation.state;
    if (wasSurface != view->state->isSurface) {
        observer_.viewWillLeave(*view);
        if (view->parent) view->parent->childrenDirty = true;
        assignRoles(*view);
        if (view->parent && view->parent->role != MountRole::structural) markPictureDirty(*view->parent);
    }
    if (mutation.changes & changedContent) noteFocus(*view);
    if (view->role == MountRole::painted) {
        if (changes & visibleChanges) markPictureDirty(*view);
    } else {
        if (changes & ownPictureChanges) view->pictureDirty = true;
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
    if (root_ == &view) root_ = nullptr;
    views_.erase(found);
}

void MountedTree::assignRoles(MountedView& view) {
    const bool inSurface = view.parent && view.parent->role != MountRole::structural;
    const MountRole role = view.state->isSurface ? MountRole::surface
                           : inSurface           ? MountRole::painted
                                                 : MountRole::structural;
    view.pictureDirty = true;
    if (role == MountRole::painted) view.surface.reset();
    view.role = role;
    for (MountedView* child : view.children) assignRoles(*child);
}

void MountedTree::noteFocus(const MountedView& view) {
    const auto* input = std::get_if<TextInputContent>(&view.state->content);
    const bool focused = input && input->focused;
    const auto found = std::find(focusedInputs_.begin(), focusedInputs_.end(), view.tag);
    if (focused && found == focusedInputs_.end()) {
        focusedInputs_.push_back(view.tag);
    } else if (!focused && found != focusedInputs_.end()) {
        focusedInputs_.erase(found);
    }
}

}  // namespace ostrel
