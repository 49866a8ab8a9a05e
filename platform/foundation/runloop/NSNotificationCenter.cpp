#include "platform/foundation/runloop/NSNotificationCenter.h"

#include "platform/foundation/runloop/RunLoop.h"

#include <algorithm>
#include <cassert>

namespace ostrel {

namespace {

[[maybe_unused]] bool isOnMainThread() { return !RunLoop::hasMain() || RunLoop::main().isMainThread(); }

}  // namespace

NSNotificationCenter& NSNotificationCenter::defaultCenter() {
    static NSNotificationCenter center;
    return center;
}

void NSNotificationCenter::addObserver(const void* observer, std::string name, Handler handler) {
    assert(isOnMainThread());
    entries_.push_back(std::make_shared<Entry>(Entry{observer, std::move(name), std::move(handler)}));
}

void NSNotificationCenter::removeObserver(const void* observer) {
    assert(isOnMainThread());
    const auto firstRemoved = std::stable_partition(entries_.begin(), entries_.end(),
                                                    [&](const auto& entry) { return entry->observer != observer; });
    // Released only when the list is consistent again: the destructor of an object that a handler holds may
    // remove observers too.
    const std::vector<std::shared_ptr<Entry>> removed(firstRemoved, entries_.end());
    entries_.erase(firstRemoved, entries_.end());
    for (const auto& entry : removed) entry->removed = true;
}

void NSNotificationCenter::postNotification(std::string_view name, Value object) {
    assert(isOnMainThread());
    std::vector<std::shared_ptr<Entry>> asked;
    std::copy_if(entries_.begin(), entries_.end(), std::back_inserter(asked),
                 [&](const auto& entry) { return entry->name == name; });
    const NSNotification notification{name, std::move(object)};
    for (const auto& entry : asked) {
        if (!entry->removed && entry->handler) entry->handler(notification);
    }
}

}  // namespace ostrel
