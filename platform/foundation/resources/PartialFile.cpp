#include "platform/foundation/resources/PartialFile.h"

#include <cerrno>
#include <cmath>
#include <ctime>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel {

namespace {
timespec timeOf(double seconds) {
    const double whole = std::floor(seconds);
    return {static_cast<std::time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
}
}  // namespace

std::optional<PartialFile> PartialFile::create(const std::string& folder) {
    std::string path = folder + "/.XXXXXX" + std::string(extension);
    const int descriptor = ::mkostemps(path.data(), static_cast<int>(extension.size()), O_CLOEXEC);
    if (descriptor < 0) return std::nullopt;
    ::flock(descriptor, LOCK_EX | LOCK_NB);
    return PartialFile(descriptor, std::move(path));
}

PartialFile::~PartialFile() {
    if (!path_.empty()) ::unlink(path_.c_str());
    if (descriptor_ >= 0) ::close(descriptor_);
}

bool PartialFile::append(std::string_view bytes) {
    std::size_t at = size_;
    while (!bytes.empty()) {
        const ssize_t count = ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(at));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        at += static_cast<std::size_t>(count);
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    size_ = at;
    return true;
}

std::optional<std::string> PartialFile::readBack() const {
    std::string bytes(size_, '\0');
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t count = ::pread(descriptor_, bytes.data() + done, bytes.size() - done, static_cast<off_t>(done));
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return std::nullopt;
        done += static_cast<std::size_t>(count);
    }
    return bytes;
}

bool PartialFile::setTimes(double lastUsed, double modified) {
    const timespec times[2] = {timeOf(lastUsed), timeOf(modified)};
    return ::futimens(descriptor_, times) == 0;
}

bool PartialFile::synchronise() { return ::fdatasync(descriptor_) == 0; }

bool PartialFile::moveTo(const std::string& path) {
    struct stat replaced {};
    if (::stat(path.c_str(), &replaced) == 0 && ::fchmod(descriptor_, replaced.st_mode & 07777) != 0) return false;
    // Network file systems report late write errors when a descriptor is closed. The other one keeps the lock.
    const int copy = ::fcntl(descriptor_, F_DUPFD_CLOEXEC, 0);
    if (copy < 0 || ::close(copy) != 0 || ::rename(path_.c_str(), path.c_str()) != 0) return false;
    path_.clear();
    return true;
}

}  // namespace ostrel
