#pragma once

#include <memory>
#include <utility>

namespace ostrel {

/// Makes an object that is reached through a shared pointer. A class with a second phase, which needs
/// `shared_from_this`, has a public `void initialise()` that is run here.
template <class T, class... Arguments>
std::shared_ptr<T> make(Arguments&&... arguments) {
    auto object = std::make_shared<T>(std::forward<Arguments>(arguments)...);
    if constexpr (requires { object->initialise(); }) object->initialise();
    return object;
}

}  // namespace ostrel
