#include "platform/foundation/Files.h"

#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace ostrel {

namespace {

struct Home {
    std::mutex mutex;  // guards path
    std::string path;
};

Home& home() {
    static Home home;
    return home;
}

std::string homeOfSystem() {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): nothing here changes the environment
    if (const char* path = std::getenv("HOME"); path && *path) return path;
    std::vector<char> buffer(16 * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found &&
        found->pw_dir) {
        return found->pw_dir;
    }
    return "/";
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

}  // namespace

std::string NSHomeDirectory() {
    Home& current = home();
    const std::lock_guard lock(current.mutex);
    return current.path.empty() ? homeOfSystem() : current.path;
}

void setHomeDirectory(std::string path) {
    Home& current = home();
    const std::lock_guard lock(current.mutex);
    current.path = std::move(path);
}

bool writeFileAtomically(const std::string& path, std::string_view text) {
    const std::filesystem::path target(path);
    if (!target.has_filename()) return false;
    const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : ".";
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure) return false;

    // mkostemp makes the file readable by its owner only, which stays so for a new file; an old one keeps its
    // mode.
    std::string temporary = (folder / ".writing-XXXXXX").string();
    const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
    if (descriptor < 0) return false;
    bool isWritten = writeAll(descriptor, text);
    struct stat status {};
    if (isWritten && ::stat(path.c_str(), &status) == 0)
        isWritten = ::fchmod(descriptor, status.st_mode & 07777) == 0;
    // Delayed write errors of network file systems come with close.
    isWritten = ::close(descriptor) == 0 && isWritten;
    if (isWritten && ::rename(temporary.c_str(), path.c_str()) == 0) return true;
    ::unlink(temporary.c_str());
    return false;
}

}  // namespace ostrel
