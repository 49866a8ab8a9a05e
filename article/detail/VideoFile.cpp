#include "article/detail/VideoFile.h"

#include "platform/foundation/resources/Files.h"
#include "platform/foundation/resources/PartialFile.h"
#include "platform/foundation/runloop/NSThread.h"

#include <cctype>
#include <filesystem>
#include <memory>
#include <optional>
#include <system_error>
#include <utility>

namespace ostrel {

namespace {

bool hasScheme(const std::string& address, std::string_view scheme) {
    if (address.size() <= scheme.size()) return false;
    for (std::size_t i = 0; i < scheme.size(); ++i) {
        if (std::tolower(static_cast<unsigned char>(address[i])) != scheme[i]) return false;
    }
    return true;
}

/// RFC 3986: all bytes are encoded except unreserved characters and the slash.
std::string percentEncodedPath(const std::string& path) {
    constexpr char digits[] = "0123456789ABCDEF";
    constexpr std::string_view others = "-._~/";
    std::string encoded;
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        const bool isAlphanumeric = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
        if (isAlphanumeric || others.find(c) != std::string_view::npos) {
            encoded += c;
        } else {
            encoded += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return encoded;
}

}  // namespace

std::string currentVideoFile() { return NSHomeDirectory() + "/Documents/current.mp4"; }

void writeCurrentVideoFile(const Data& video, std::function<bool()> isWanted,
                           std::function<void(const std::string&)> done) {
    const std::filesystem::path target = currentVideoFile();
    NSThread::detachNewThread([=] {
        std::error_code error;
        std::filesystem::create_directories(target.parent_path(), error);
        auto file = PartialFile::create(target.parent_path().string());
        if (file && !file->append(video.view())) file.reset();
        if (!RunLoop::hasMain()) return;
        // Shared because a task is copyable.
        const auto written = std::make_shared<std::optional<PartialFile>>(std::move(file));
        RunLoop::main().perform([=] {
            if (!isWanted()) return;
            const bool isInPlace = *written && (*written)->moveTo(target.string());
            done(isInPlace ? target.string() : std::string());
        });
    });
}

std::string playerURL(const std::string& path) {
    if (hasScheme(path, "http://") || hasScheme(path, "https://")) return path;
    return !path.empty() && path.front() == '/' ? "file://" + percentEncodedPath(path) : std::string();
}

}  // namespace ostrel
