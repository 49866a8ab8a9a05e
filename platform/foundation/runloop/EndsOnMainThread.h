#pragma once

#include "platform/foundation/runloop/RunLoop.h"

#include <memory>
#include <utility>

namespace ostrel {

/// A reference to what belongs to the main thread, for work that runs on others: whichever thread lets go of it or of a
/// copy last, it is given up on the main one, in a later turn of its run loop. Any thread.
template <class Object>
std::shared_ptr<Object> endsOnMainThread(std::shared_ptr<Object> object) {
    Object* const bare = object.get();
    return {bare, [object = std::move(object)](Object*) mutable {
                if (!object || !RunLoop::hasMain() || RunLoop::main().isMainThread()) return;
                RunLoop::main().perform([object = std::move(object)] {});
            }};
}

}  // namespace ostrel
