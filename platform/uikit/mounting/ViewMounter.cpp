#include "platform/uikit/mounting/ViewMounter.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

std::shared_ptr<const ViewState> ViewMounter::mountedState(ViewTag tag) const {
    const auto node = nodes_.find(tag);
    return node == nodes_.end() ? nullptr : node->second.state;
}

void ViewMounter::reset() {
    nodes_.clear();
    number_ = 0;
}

std::vector<ViewTag> ViewMounter::removals(const Node& node, const std::vector<ViewTag>& wanted) const {
    std::unordered_map<ViewTag, std::size_t> position;
    for (std::size_t i = 0; i < wanted.size(); ++i) position.emplace(wanted[i], i);

    // The longest sequence of children that are already in the wanted z-order stays (patience sorting). The
    // other children are removed; those that are still wanted are inserted again at their new index.
    const std::size_t count = node.children.size();
    constexpr std::size_t none = static_cast<std::size_t>(-1);
    std::vector<std::size_t> wantedAt(count, none), previous(count, none), piles;
    for (std::size_t i = 0; i < count; ++i) {
        const auto found = position.find(node.children[i]);
        if (found == position.end()) continue;
        wantedAt[i] = found->second;
        const auto pile = std::lower_bound(piles.begin(), piles.end(), wantedAt[i],
                                           [&](std::size_t top, std::size_t value) { return wantedAt[top] < value; });
        if (pile != piles.begin()) previous[i] = *(pile - 1);
        if (pile == piles.end()) {
            piles.push_back(i);
        } else {
            *pile = i;
        }
    }
    std::vector<bool> stays(count, false);
    for (std::size_t i = piles.empty() ? none : piles.back(); i != none; i = previous[i]) stays[i] = true;
    std::vector<ViewTag> leaving;
    for (std::size_t i = 0; i < count; ++i) {
        if (!stays[i]) leaving.push_back(node.children[i]);
    }
    return leaving;
}

void ViewMounter::removeChild(ViewTag parent, std::size_t index, std::vector<Mutation>& mutations) {
    std::vector<ViewTag>& children = nodes_.at(parent).children;
    const ViewTag child = children.at(index);
    children.erase(children.begin() + static_cast<std::ptrdiff_t>(index));
    nodes_.at(child).parent = 0;
    mutations.push_back(Mutation::remove(parent, child, index));
}

void ViewMounter::insertChildren(ViewTag parent, const std::vector<ViewTag>& wanted, std::vector<Mutation>& mutations) {
    Node& node = nodes_.at(parent);
    if (node.children == wanted) return;
    // The children that stayed are in the wanted order, so that one pass over both lists finds every
    // insertion index.
    std::vector<ViewTag> present = std::move(node.children);
    std::size_t next = 0;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        if (next < present.size() && present[next] == wanted[i]) {
            ++next;
            continue;
        }
        Node& child = nodes_.at(wanted[i]);
        assert(child.parent == 0 && "a view is in one place only");
        child.parent = parent;
        mutations.push_back(Mutation::insert(parent, wanted[i], i));
    }
    assert(next == present.size());
    nodes_.at(parent).children = wanted;
}

}  // namespace ostrel
