#pragma once

#include "articleserver/common/ServerText.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>

namespace articleserver {

/// Counts the attempts of each key within a sliding window, in bounded memory. Any thread may call it.
class AttemptLimiter final {
public:
    /// Allows `limit` attempts of a key within `window` milliseconds. Remembers `capacity` keys; a further
    /// key replaces the key whose last attempt is the oldest.
    AttemptLimiter(int limit, ServerTime window, std::size_t capacity);

    /// Counts an attempt and returns true. When the limit is reached, counts nothing and returns false.
    bool take(const std::string& key, ServerTime now);
    /// Removes the latest attempt of the key from the count, for an attempt that was not a failure.
    void giveBack(const std::string& key);

private:
    void makeRoom(ServerTime now);

    const std::size_t limit_;
    const ServerTime window_;
    const std::size_t capacity_;
    std::mutex mutex_;
    std::unordered_map<std::string, std::deque<ServerTime>> attempts_;  ///< guarded by mutex_
};

}  // namespace articleserver
