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

/// The last lines of the log, for the screen that shows them. Shows an embedder where lines of the module's log can go
/// (setLogSink). `append` may be called on any thread, all other operations on the main thread.
class ReaderLog final : public std::enable_shared_from_this<ReaderLog> {
public:
    /// The number of lines that are kept, and the bytes of one line before it is cut: 8 MiB in all.
    static constexpr std::size_t mostLines = 2000, longestLine = 4096;
    /// Observers are called at most once in this time, in seconds.
    static constexpr double updateInterval = 0.1;

    struct Line {
        /// Counts from 1 all lines of the process, removed ones too.
        std::uint64_t number = 0;
        /// Seconds since 1970.
        double time = 0;
        std::string text;
    };

    void append(std::string_view text);
    std::vector<Line> lines() const;
    void clear();
    /// All lines with their times; a line break ends each line.
    std::string text() const;

    /// Calls `changed` after lines were added or cleared. `observer` only identifies the entry.
    void addObserver(const void* observer, std::function<void()> changed);
    void removeObserver(const void* observer);

private:
    void tell();

    /// Guards the next three members.
    mutable std::mutex mutex_;
    std::deque<Line> lines_;
    std::uint64_t last_ = 0;
    bool isTelling_ = false;
    std::vector<std::pair<const void*, std::function<void()>>> observers_;
};

/// The local time as "14:03:27". `time` in seconds since 1970.
std::string logTimeText(double time);

}  // namespace ostrel
