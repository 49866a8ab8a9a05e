#pragma once

#include "platform/foundation/runloop/NSLog.h"

#include <mutex>
#include <string>
#include <vector>

namespace ostrel {

/// Collects the log while it lives.
class LogCapture final {
public:
    LogCapture()
        : former_(setLogSink([this](std::string_view line) {
              const std::lock_guard lock(mutex_);
              lines_.emplace_back(line);
          })) {}
    ~LogCapture() { setLogSink(std::move(former_)); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<std::string> lines() const {
        const std::lock_guard lock(mutex_);
        return lines_;
    }

private:
    mutable std::mutex mutex_;
    std::vector<std::string> lines_;  // guarded by mutex_
    LogSink former_;
};

}  // namespace ostrel
