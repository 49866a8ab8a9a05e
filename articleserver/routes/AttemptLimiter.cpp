#include "articleserver/routes/AttemptLimiter.h"

#include <algorithm>

namespace articleserver {

AttemptLimiter::AttemptLimiter(int limit, ServerTime window, std::size_t capacity)
    : limit_(static_cast<std::size_t>(limit)), window_(window), capacity_(capacity) {}

bool AttemptLimiter::take(const std::string& key, ServerTime now) {
    std::lock_guard lock(mutex_);
    if (!attempts_.contains(key) && attempts_.size() >= capacity_) makeRoom(now);
    std::deque<ServerTime>& times = attempts_[key];
    while (!times.empty() && times.front() <= now - window_) times.pop_front();
    if (times.size() >= limit_) return false;
    times.push_back(now);
    return true;
}

void AttemptLimiter::giveBack(const std::string& key) {
    std::lock_guard lock(mutex_);
    auto found = attempts_.find(key);
    if (found == attempts_.end()) return;
    if (!found->second.empty()) found->second.pop_back();
    if (found->second.empty()) attempts_.erase(found);
}

void AttemptLimiter::makeRoom(ServerTime now) {
    std::erase_if(attempts_,
                  [&](const auto& entry) { return entry.second.empty() || entry.second.back() <= now - window_; });
    if (attempts_.size() < capacity_) return;
    auto oldest = std::min_element(attempts_.begin(), attempts_.end(), [](const auto& left, const auto& right) {
        return left.second.back() < right.second.back();
    });
    attempts_.erase(oldest);
}

}  // namespace articleserver
