#pragma once

#include "platform/foundation/values/Value.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

struct NSNotification {
    std::string_view name;
    /// The record that the notification is about; may be absent.
    Value object;
};

/// Delivers notifications to observers by name. A post calls the observers at once, in the order in which
/// they were added, on the main thread. An observer removed during a post is not called any more; an observer
/// added during a post is first called by the next one.
class NSNotificationCenter final {
public:
    using Handler = std::function<void(const NSNotification&)>;

    static NSNotificationCenter& defaultCenter();

    /// `observer` only identifies the entry for `removeObserver`; it is never dereferenced.
    void addObserver(const void* observer, std::string name, Handler handler);
    /// Removes every entry of this observer.
    void removeObserver(const void* observer);
    void postNotification(std::string_view name, Value object = {});
    std::size_t observerCount() const { return entries_.size(); }

private:
    struct Entry {
        const void* observer;
        std::string name;
        Handler handler;
        bool removed = false;
    };
    std::vector<std::shared_ptr<Entry>> entries_;
};

}  // namespace ostrel
