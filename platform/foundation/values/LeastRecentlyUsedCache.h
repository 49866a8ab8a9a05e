#pragma once

#include <cstddef>
#include <functional>
#include <limits>
#include <list>
#include <unordered_map>
#include <utility>

namespace ostrel {

/// Values by key with a bound on the sum of their costs: an insertion drops the values that were used longest ago. The
/// caller chooses the unit of the costs. Not synchronised.
template <class Key, class Content, class Hash = std::hash<Key>>
class LeastRecentlyUsedCache final {
public:
    static constexpr std::size_t unbounded = std::numeric_limits<std::size_t>::max();
    struct Limits {
        std::size_t totalCost = unbounded;
        /// A value that costs more is not kept, so that one giant does not push out everything else.
        std::size_t costOfOne = unbounded;
        std::size_t count = unbounded;
    };

    explicit LeastRecentlyUsedCache(Limits limits) : limits_(limits) {}

    /// The value, marked as used now; null when there is none. Valid until the next change of the cache.
    Content* find(const Key& key) {
        const auto found = places_.find(key);
        if (found == places_.end()) return nullptr;
        entries_.splice(entries_.begin(), entries_, found->second);
        return &found->second->content;
    }

    /// Keeps `content` in place of what the key had. A value within `Limits::costOfOne` stays until the next insertion,
    /// even when it alone costs more than `Limits::totalCost`.
    void insert(const Key& key, Content content, std::size_t cost) {
        remove(key);
        if (cost > limits_.costOfOne) return;
        entries_.push_front({key, std::move(content), cost});
        places_.emplace(key, entries_.begin());
        totalCost_ += cost;
        while (entries_.size() > 1 && (totalCost_ > limits_.totalCost || entries_.size() > limits_.count)) {
            totalCost_ -= entries_.back().cost;
            places_.erase(entries_.back().key);
            entries_.pop_back();
        }
    }

    void remove(const Key& key) {
        const auto found = places_.find(key);
        if (found == places_.end()) return;
        totalCost_ -= found->second->cost;
        entries_.erase(found->second);
        places_.erase(found);
    }

    void clear() {
        entries_.clear();
        places_.clear();
        totalCost_ = 0;
    }

    std::size_t totalCost() const { return totalCost_; }
    std::size_t count() const { return entries_.size(); }

private:
    struct Entry {
        Key key;
        Content content;
        std::size_t cost;
    };
    Limits limits_;
    std::size_t totalCost_ = 0;
    /// The value that was used last stands first.
    std::list<Entry> entries_;
    std::unordered_map<Key, typename std::list<Entry>::iterator, Hash> places_;
};

}  // namespace ostrel
