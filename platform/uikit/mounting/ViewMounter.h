#pragma once

#include "platform/uikit/mounting/Mounting.h"

#include <algorithm>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

namespace ostrel {

/// Keeps a copy of what the backend of one window shows, and computes the mutations that lead from there to
/// the wanted state of the views that changed. Refers to views by tag only, because a view that left the
/// window may have been destroyed. Main thread.
class ViewMounter final {
public:
    /// The wanted state of one view that changed.
    struct Change {
        ViewTag tag = 0;
        std::shared_ptr<const ViewState> state;  ///< null: unchanged
        std::uint32_t changes = 0;
        std::optional<std::vector<ViewTag>> children;  ///< back to front; absent: unchanged
    };

    bool isMounted(ViewTag tag) const { return nodes_.contains(tag); }
    std::shared_ptr<const ViewState> mountedState(ViewTag tag) const;
    std::size_t mountedCount() const { return nodes_.size(); }
    /// The next transaction sends everything, as number 1.
    void reset();

    /// The transaction that brings the backend to the wanted state; it has no mutations when nothing differs.
    /// `changes` holds every view that is new in the window and every view whose children changed.
    /// `isInWindow` says whether a view that has left its old parent now has another parent in the window.
    template <class IsInWindow>
    MountingTransaction transaction(const std::vector<Change>& changes, const IsInWindow& isInWindow);

private:
    struct Node {
        ViewTag parent = 0;
        std::vector<ViewTag> children;
        std::shared_ptr<const ViewState> state;
    };

    std::vector<ViewTag> removals(const Node& node, const std::vector<ViewTag>& wanted) const;
    void removeChild(ViewTag parent, std::size_t index, std::vector<Mutation>& mutations);
    void insertChildren(ViewTag parent, const std::vector<ViewTag>& wanted, std::vector<Mutation>& mutations);
    template <class IsInWindow>
    void destroy(ViewTag tag, const IsInWindow& isInWindow, std::vector<Mutation>& mutations);

    std::unordered_map<ViewTag, Node> nodes_;
    std::uint64_t number_ = 0;
};

template <class IsInWindow>
MountingTransaction ViewMounter::transaction(const std::vector<Change>& changes, const IsInWindow& isInWindow) {
    MountingTransaction result;
    std::vector<Mutation>& mutations = result.mutations;
    for (const Change& change : changes) {
        const auto node = nodes_.find(change.tag);
        if (!change.children || node == nodes_.end()) continue;
        const std::vector<ViewTag> leaving = removals(node->second, *change.children);
        // From the front to the back, so that the indices of the other children stay valid.
        for (auto tag = leaving.rbegin(); tag != leaving.rend(); ++tag) {
            const auto& children = nodes_.at(change.tag).children;
            removeChild(change.tag,
                        static_cast<std::size_t>(std::find(children.begin(), children.end(), *tag) - children.begin()),
                        mutations);
            if (!isInWindow(*tag)) destroy(*tag, isInWindow, mutations);
        }
    }
    std::vector<Mutation> updates;
    for (const Change& change : changes) {
        if (!change.state) continue;
        auto [node, isNew] = nodes_.try_emplace(change.tag);
        node->second.state = change.state;
        if (isNew) {
            mutations.push_back(Mutation::create(change.tag, change.state));
        } else {
            updates.push_back(Mutation::update(change.tag, change.state, change.changes));
        }
    }
    for (const Change& change : changes) {
        if (change.children) insertChildren(change.tag, *change.children, mutations);
    }
    mutations.insert(mutations.end(), updates.begin(), updates.end());
    if (!mutations.empty()) result.number = ++number_;
    return result;
}

template <class IsInWindow>
void ViewMounter::destroy(ViewTag tag, const IsInWindow& isInWindow, std::vector<Mutation>& mutations) {
    for (;;) {
        const std::vector<ViewTag>& children = nodes_.at(tag).children;
        if (children.empty()) break;
        const ViewTag child = children.back();
        removeChild(tag, children.size() - 1, mutations);
        if (!isInWindow(child)) destroy(child, isInWindow, mutations);
    }
    nodes_.erase(tag);
    mutations.push_back(Mutation::destroy(tag));
}

}  // namespace ostrel
