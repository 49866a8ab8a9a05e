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
    /// A record, or absent.
    Value object;
};

/// Tells whoever asked that something happened. Posting calls the observers at once, in the order they were
/// added, on the main thread. An observer removed while a post is under way is not called any more; one added
/// then is not yet.
class NSNotificationCenter final {
public:
    using Handler = std::function<void(const NSNotification&)>;

    static NSNotificationCenter& defaultCenter();

    /// `observer` only identifies the entry for removal; it is never dereferenced.
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
