#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The last lines of the log, for the log window. Lines come from any thread; all else on the main thread.
class ReaderLog final : public std::enable_shared_from_this<ReaderLog> {
public:
    /// Older lines are let go; longer ones are cut. Together at most 8 MiB.
    static constexpr std::size_t mostLines = 2000, longestLine = 4096;
    /// Observers are told at most this often, seconds.
    static constexpr double updateInterval = 0.1;

    struct Line {
        std::uint64_t number = 0;  ///< counts from 1, over all lines there ever were
        double time = 0;           ///< seconds since 1970
        std::string text;
    };

    void append(std::string_view text);
    std::vector<Line> lines() const;
    void clear();
    /// All lines with their times, each ended by a line break.
    std::string text() const;

    /// `observer` only identifies the entry.
    void addObserver(const void* observer, std::function<void()> changed);
    void removeObserver(const void* observer);

private:
    void tell();

    mutable std::mutex mutex_;  // guards the next three
    std::deque<Line> lines_;
    std::uint64_t last_ = 0;
    bool isTelling_ = false;
    std::vector<std::pair<const void*, std::function<void()>>> observers_;
};

/// "14:03:27", local time.
std::string logTimeText(double time);

}  // namespace ostrel
