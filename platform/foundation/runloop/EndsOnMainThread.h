#pragma once

#include "platform/foundation/runloop/RunLoop.h"

#include <memory>
#include <utility>

namespace ostrel {

/// A shared reference to an object of the main thread, for work on other threads. Whichever thread releases
/// the last copy, the object is released on the main thread, in a later turn of its run loop. Any thread.
template <class Object>
std::shared_ptr<Object> endsOnMainThread(std::shared_ptr<Object> object) {
    Object* const bare = object.get();
    return {bare, [object = std::move(object)](Object*) mutable {
                if (!object || !RunLoop::hasMain() || RunLoop::main().isMainThread()) return;
                RunLoop::main().perform([object = std::move(object)] {});
            }};
}

}  // namespace ostrel
