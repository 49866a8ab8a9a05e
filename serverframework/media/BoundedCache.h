#pragma once

#include <cstddef>
#include <list>
#include <string>
#include <unordered_map>
#include <utility>

namespace ostrel {

/// Values by key with a bound on their total cost; what was used longest ago is dropped first. Not synchronised.
template <class Content>
class BoundedCache final {
public:
    /// `maximumCost`: the sum of the costs kept, in bytes. A value that alone costs more than a quarter of it is not
    /// kept, so that one giant does not push out everything else.
    explicit BoundedCache(std::size_t maximumCost) : maximumCost_(maximumCost) {}

    /// The value, marked as used now; null when there is none. Valid until the next `insert` or `remove`.
    Content* find(const std::string& key) {
        const auto found = places_.find(key);
        if (found == places_.end()) return nullptr;
        entries_.splice(entries_.begin(), entries_, found->second);
        return &found->second->content;
    }

    void insert(const std::string& key, Content content, std::size_t cost) {
        remove(key);
        cost += key.size() + overheadPerEntry;
        if (cost > maximumCost_ / 4) return;
        while (totalCost_ + cost > maximumCost_) remove(std::string(entries_.back().key));
        entries_.push_front({key, std::move(content), cost});
        places_.emplace(key, entries_.begin());
        totalCost_ += cost;
    }

    void remove(const std::string& key) {
        const auto found = places_.find(key);
        if (found == places_.end()) return;
        totalCost_ -= found->second->cost;
        entries_.erase(found->second);
        places_.erase(found);
    }

    std::size_t totalCost() const { return totalCost_; }
    std::size_t count() const { return entries_.size(); }

private:
    static constexpr std::size_t overheadPerEntry = 256;
    struct Entry {
        std::string key;
        Content content;
        std::size_t cost;
    };
    std::size_t maximumCost_;
    std::size_t totalCost_ = 0;
    std::list<Entry> entries_;
    std::unordered_map<std::string, typename std::list<Entry>::iterator> places_;
};

}  // namespace ostrel
