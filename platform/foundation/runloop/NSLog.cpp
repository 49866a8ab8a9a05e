#include "platform/foundation/runloop/NSLog.h"

#include <cerrno>
#include <mutex>
#include <unistd.h>

namespace ostrel {

namespace {

struct Log {
    std::mutex mutex;  // guards sink, and writes one line at a time
    LogSink sink;
};

Log& sharedLog() {
    // Never destroyed, because threads may still log while the process ends.
    static Log& log = *new Log;
    return log;
}

thread_local bool isInsideSink = false;

std::string onOneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size() + 1);
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') continue;
        if (text[i] == '\n' || text[i] == '\r') {
            line += "\\n";
        } else {
            line += text[i];
        }
    }
    return line;
}

void writeToStandardError(std::string line) {
    line += '\n';
    std::string_view rest = line;
    while (!rest.empty()) {
        const ssize_t written = ::write(STDERR_FILENO, rest.data(), rest.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return;
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace

void logLine(std::string_view text) {
    std::string line = onOneLine(text);
    // A sink that logs would deadlock on the mutex; its own lines go to standard error.
    if (isInsideSink) return writeToStandardError(std::move(line));
    Log& log = sharedLog();
    const std::lock_guard lock(log.mutex);
    if (!log.sink) return writeToStandardError(std::move(line));
    isInsideSink = true;
    log.sink(line);
    isInsideSink = false;
}

LogSink setLogSink(LogSink sink) {
    Log& log = sharedLog();
    const std::lock_guard lock(log.mutex);
    std::swap(log.sink, sink);
    return sink;
}

std::string detail::fillPlaceholders(std::string_view format, const std::string* arguments, std::size_t count) {
    std::string line;
    std::size_t copied = 0;
    for (std::size_t next = 0; next < count; ++next) {
        const std::size_t found = format.find("%@", copied);
        if (found == std::string_view::npos) break;
        line.append(format.substr(copied, found - copied)).append(arguments[next]);
        copied = found + 2;
    }
    line.append(format.substr(copied));
    return line;
}

}  // namespace ostrel
