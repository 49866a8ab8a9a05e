#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>

namespace ostrel {

/// The order in which media are fetched: the media requested last come first, because they are on screen now. Media
/// that were requested together, as the rows of one screen do it, keep their order. Not synchronised.
class MediaQueue final {
public:
    /// Requests with at most so much time between them belong together.
    static constexpr double togetherSeconds = 0.05;

    /// Adds `url`, or moves it to the latest requests. `now` is in seconds and never falls.
    void add(const std::string& url, double now) {
        if (now - lastAdded_ > togetherSeconds) ++batch_;
        lastAdded_ = now;
        const auto found = places_.find(url);
        if (found != places_.end()) {
            if (found->second.first == -batch_) return;
            order_.erase(found->second);
        }
        const Place place(-batch_, ++count_);
        order_.emplace(place, url);
        places_[url] = place;
    }

    std::optional<std::string> takeFirst() {
        if (order_.empty()) return std::nullopt;
        std::string url = std::move(order_.begin()->second);
        order_.erase(order_.begin());
        places_.erase(url);
        return url;
    }

    void remove(const std::string& url) {
        const auto found = places_.find(url);
        if (found == places_.end()) return;
        order_.erase(found->second);
        places_.erase(found);
    }

    bool contains(const std::string& url) const { return places_.contains(url); }

    bool isEmpty() const { return order_.empty(); }

private:
    /// The negative number of the batch, then the order of adding: later batches come first.
    using Place = std::pair<std::int64_t, std::uint64_t>;
    std::map<Place, std::string> order_;
    std::unordered_map<std::string, Place> places_;
    std::int64_t batch_ = 0;
    std::uint64_t count_ = 0;
    double lastAdded_ = 0;
};

}  // namespace ostrel
