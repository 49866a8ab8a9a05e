#include "reader/services/ReaderLog.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/Text.h"

#include <ctime>
#include <utility>

namespace ostrel {

void ReaderLog::append(std::string_view text) {
    std::string line(text.substr(0, longestLine));
    if (text.size() > longestLine) {
        line.resize(validUtf8Prefix(line));
        line += "…";
    }
    const double time = Clock::shared().now().secondsSince1970;
    const std::lock_guard lock(mutex_);
    lines_.push_back({++last_, time, std::move(line)});
    if (lines_.size() > mostLines) lines_.pop_front();
    if (!RunLoop::hasMain() || std::exchange(isTelling_, true)) return;
    RunLoop::main().performAfter(updateInterval, [weak = weak_from_this()] {
        if (const auto self = weak.lock()) self->tell();
    });
}

std::vector<ReaderLog::Line> ReaderLog::lines() const {
    const std::lock_guard lock(mutex_);
    return {lines_.begin(), lines_.end()};
}

void ReaderLog::clear() {
    {
        const std::lock_guard lock(mutex_);
        lines_.clear();
    }
    tell();
}

std::string ReaderLog::text() const {
    std::string all;
    for (const Line& line : lines()) all += logTimeText(line.time) + " " + line.text + "\n";
    return all;
}

void ReaderLog::tell() {
    {
        const std::lock_guard lock(mutex_);
        isTelling_ = false;
    }
    const auto observers = observers_;
    for (const auto& [observer, changed] : observers) changed();
}

void ReaderLog::addObserver(const void* observer, std::function<void()> changed) {
    observers_.emplace_back(observer, std::move(changed));
}

void ReaderLog::removeObserver(const void* observer) {
    std::erase_if(observers_, [observer](const auto& entry) { return entry.first == observer; });
}

std::string logTimeText(double time) {
    const auto seconds = static_cast<std::time_t>(time);
    std::tm parts{};
    char text[16] = "";
    if (localtime_r(&seconds, &parts)) std::strftime(text, sizeof text, "%H:%M:%S", &parts);
    return text;
}

}  // namespace ostrel
