#pragma once

#include "platform/uikit/table/UITableViewCell.h"

#include <list>
#include <memory>
#include <string>

namespace ostrel {

/// Rows that are not shown and wait for reuse by identifier. Holds at most `limit` rows; the least recently used go
/// first.
class UITableViewReusePool final {
public:
    explicit UITableViewReusePool(std::size_t limit) : limit_(limit) {}

    std::size_t size() const { return cells_.size(); }
    void clear() { cells_.clear(); }
    void put(std::shared_ptr<UITableViewCell> cell) {
        cells_.push_front(std::move(cell));
        if (cells_.size() > limit_) cells_.pop_back();
    }
    /// Null when there is none with that identifier.
    std::shared_ptr<UITableViewCell> take(const std::string& identifier) {
        for (auto cell = cells_.begin(); cell != cells_.end(); ++cell) {
            if ((*cell)->reuseIdentifier() != identifier) continue;
            const auto found = *cell;
            cells_.erase(cell);
            return found;
        }
        return nullptr;
    }
    void remove(const UITableViewCell& cell) {
        cells_.remove_if([&](const auto& other) { return other.get() == &cell; });
    }

private:
    std::size_t limit_;
    std::list<std::shared_ptr<UITableViewCell>> cells_;  // the one used last first
};

}  // namespace ostrel
