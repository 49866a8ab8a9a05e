#include "platform/uikit/Mounting.h"

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

}  // namespace ostrel
