#pragma once

#include "articleserver/common/ServerText.h"

#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <unordered_map>

namespace articleserver {

/// Counts attempts per key within a sliding window, in bounded memory. Any thread may call it.
class AttemptLimiter final {
public:
    /// At most `limit` attempts within `window` milliseconds; remembers at most `capacity` keys and forgets
    /// those whose last attempt is oldest.
    AttemptLimiter(int limit, ServerTime window, std::size_t capacity);

    /// Counts an attempt and answers true, or answers false, counting nothing, when it would be too many.
    bool take(const std::string& key, ServerTime now);
    /// Takes back one attempt that turned out not to count.
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
