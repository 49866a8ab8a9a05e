#include "platform/uikit/mounting/Mounting.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

Mutation Mutation::create(ViewTag tag, std::shared_ptr<const ViewState> state) {
    return {.type = Type::create, .tag = tag, .changes = changedAll, .state = std::move(state)};
}

Mutation Mutation::insert(ViewTag parent, ViewTag tag, std::size_t index) {
    return {.type = Type::insert, .tag = tag, .parent = parent, .index = index, .state = nullptr};
}

Mutation Mutation::remove(ViewTag parent, ViewTag tag, std::size_t index) {
    return {.type = Type::remove, .tag = tag, .parent = parent, .index = index, .state = nullptr};
}

Mutation Mutation::update(ViewTag tag, std::shared_ptr<const ViewState> state, std::uint32_t changes) {
    return {.type = Type::update, .tag = tag, .changes = changes, .state = std::move(state)};
}

Mutation Mutation::destroy(ViewTag tag) { return {.type = Type::destroy, .tag = tag, .state = nullptr}; }

bool LayerRotation::isMoving(double time) const {
    return angles.size() > 1 && duration > 0 && time - begin < duration * repeatCount;
}

double LayerRotation::angleAt(double time) const {
    if (angles.empty()) return 0;
    if (angles.size() == 1 || !(duration > 0)) return angles.front();
    double runs = std::max(0.0, (time - begin) / duration);
    if (runs >= repeatCount) {
        if (!staysAtEnd) return 0;
        runs = repeatCount;
    }
    double within = runs - std::floor(runs);
    // A whole number of runs ends with the last angle of a run, not with the first angle of the next run.
    if (within == 0 && runs >= repeatCount && runs > 0) within = 1;
    const double step = within * static_cast<double>(angles.size() - 1);
    const auto first = std::min(static_cast<std::size_t>(step), angles.size() - 2);
    const double share = step - static_cast<double>(first);
    return angles[first] + (angles[first + 1] - angles[first]) * share;
}

}  // namespace ostrel
