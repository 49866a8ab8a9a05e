#pragma once

#include <memory>
#include <utility>

namespace ostrel {

/// Makes an object owned by a shared pointer. A class whose construction has a second phase that needs
/// `shared_from_this` has a public `void initialise()`, which is called here.
template <class T, class... Arguments>
std::shared_ptr<T> make(Arguments&&... arguments) {
    auto object = std::make_shared<T>(std::forward<Arguments>(arguments)...);
    if constexpr (requires { object->initialise(); }) object->initialise();
    return object;
}

}  // namespace ostrel
