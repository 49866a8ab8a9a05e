#include "platform/foundation/resources/Files.h"

#include "platform/foundation/resources/PartialFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <mutex>
#include <pwd.h>
#include <sys/stat.h>
#include <system_error>
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
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no code of this program changes the environment
    if (const char* path = std::getenv("HOME"); path && *path) return path;
    std::vector<char> buffer(16 * 1024);
    passwd entry{};
    passwd* found = nullptr;
    if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found && found->pw_dir) {
        return found->pw_dir;
    }
    return "/";
}

/// A regular file opened for reading, and its size.
struct Source {
    int descriptor = -1;
    std::size_t size = 0;

    Source() = default;
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;
    ~Source() {
        if (descriptor >= 0) ::close(descriptor);
    }

    /// Opens without blocking, because a path may name a pipe; only a regular file is accepted.
    bool open(const std::string& path, std::size_t limit, std::string* error) {
        const auto fail = [&](const std::string& reason) {
            if (error) *error = "The file \"" + path + "\" cannot be read: " + reason + ".";
            return false;
        };
        descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        struct stat status {};
        if (descriptor < 0 || ::fstat(descriptor, &status) != 0) return fail(std::generic_category().message(errno));
        if (!S_ISREG(status.st_mode)) return fail("it is no regular file");
        if (static_cast<std::uint64_t>(status.st_size) > limit)
            return fail("it is larger than " + std::to_string(limit >> 20) + " MiB");
        size = static_cast<std::size_t>(status.st_size);
        return true;
    }

    /// Passes the bytes on in pieces, at most as many as the file had when it was opened: the file may grow
    /// or shrink.
    template <class Take>
    bool read(const Take& take) const {
        std::vector<char> piece(std::min<std::size_t>(size, 256 << 10));
        for (std::size_t done = 0; done < size;) {
            const ssize_t count = ::read(descriptor, piece.data(), std::min(piece.size(), size - done));
            if (count < 0 && errno == EINTR) continue;
            if (count < 0) return false;
            if (count == 0) return true;
            if (!take(std::string_view(piece.data(), static_cast<std::size_t>(count)))) return false;
            done += static_cast<std::size_t>(count);
        }
        return true;
    }
};

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
    auto file = PartialFile::create(folder.string());
    return file && file->append(text) && file->moveTo(path);
}

Data readFile(const std::string& path, std::size_t limit, std::string* error) {
    Source source;
    if (!source.open(path, limit, error)) return {};
    std::string bytes;
    bytes.reserve(source.size);
    if (source.read([&](std::string_view piece) { return bytes.append(piece), true; }))
        return Data::take(std::move(bytes));
    if (error) *error = "The file \"" + path + "\" cannot be read: " + std::generic_category().message(errno) + ".";
    return {};
}

Data snapshotOfFile(const std::string& path, std::size_t limit, std::string* error) {
    Source source;
    if (!source.open(path, limit, error)) return {};
    std::error_code failure;
    const std::filesystem::path folder = std::filesystem::temp_directory_path(failure);
    auto copy = failure ? std::nullopt : PartialFile::create(folder.string());
    if (copy && source.read([&](std::string_view piece) { return copy->append(piece); }))
        return Data::mapFile(copy->path(), error);
    if (error) *error = "The file \"" + path + "\" cannot be copied: " + std::generic_category().message(errno) + ".";
    return {};
}

}  // namespace ostrel
