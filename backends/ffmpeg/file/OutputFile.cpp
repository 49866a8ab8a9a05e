#include "backends/ffmpeg/file/OutputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <random>
#include <sys/stat.h>
#include <unistd.h>

namespace ostrel {

namespace {

// The process's file mode creation mask takes bits away.
constexpr mode_t newFileMode = 0666;

NSError systemError(const std::string& what, int number) { return {what + ": " + std::strerror(number) + ".", number}; }

std::string folderOf(const std::string& path) {
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

}  // namespace

int OutputFiles::openUnnamed(const std::string& folder) {
    return ::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, newFileMode);
}

int OutputFiles::openTemporary(std::string& pattern) {
    const int descriptor = ::mkostemp(pattern.data(), O_CLOEXEC);
    if (descriptor < 0) return -1;
    // The mask can be read only by setting it, which would affect other threads; 0644 is the mode under the usual mask.
    ::fchmod(descriptor, 0644);
    return descriptor;
}

long OutputFiles::write(int descriptor, const std::uint8_t* bytes, std::size_t count, std::int64_t offset) {
    return ::pwrite(descriptor, bytes, count, offset);
}

int OutputFiles::synchronise(int descriptor) { return ::fsync(descriptor); }

int OutputFiles::link(int descriptor, const std::string& path) {
    const std::string self = "/proc/self/fd/" + std::to_string(descriptor);
    return ::linkat(AT_FDCWD, self.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW);
}

int OutputFiles::rename(const std::string& from, const std::string& to) {
    return std::rename(from.c_str(), to.c_str());
}

OutputFile::OutputFile(std::shared_ptr<OutputFiles> files, std::string path)
    : files_(std::move(files)), path_(std::move(path)) {}

std::unique_ptr<OutputFile> OutputFile::create(std::shared_ptr<OutputFiles> files, const std::string& path,
                                               std::optional<NSError>* error) {
    const auto fail = [&](NSError why) -> std::unique_ptr<OutputFile> {
        if (error) *error = std::move(why);
        return nullptr;
    };
    std::string place = path;
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) return fail(systemError("The destination cannot be written", EISDIR));
        if (!S_ISREG(status.st_mode)) return fail(NSError{"The destination is no file."});
        // A symbolic link stays, and its target is replaced.
        std::error_code failure;
        const auto real = std::filesystem::canonical(path, failure);
        if (!failure) place = real.string();
    }
    if (!std::filesystem::path(place).has_filename()) return fail(NSError{"The destination has no name."});
    auto file = std::make_unique<OutputFile>(std::move(files), place);
    const std::string folder = folderOf(place);
    if (::mkdir(folder.c_str(), 0777) == 0) file->madeFolder_ = folder;
    if (!file->openFile()) return fail(systemError("The destination cannot be written", errno));
    return file;
}

bool OutputFile::openFile() {
    descriptor_ = files_->openUnnamed(folderOf(path_));
    if (descriptor_ >= 0) return true;
    if (errno != EOPNOTSUPP && errno != EISDIR && errno != ENOENT) return false;
    std::string pattern = folderOf(path_) + "/.converting-XXXXXX";
    descriptor_ = files_->openTemporary(pattern);
    if (descriptor_ >= 0) temporaryPath_ = pattern;
    return descriptor_ >= 0;
}

OutputFile::~OutputFile() {
    if (!isPublished_ && !temporaryPath_.empty()) ::unlink(temporaryPath_.c_str());
    if (descriptor_ >= 0) ::close(descriptor_);
    // The call succeeds only for an empty folder.
    if (!isPublished_ && !madeFolder_.empty()) ::rmdir(madeFolder_.c_str());
}

int OutputFile::write(std::int64_t offset, const std::uint8_t* bytes, int count) {
    int done = 0;
    while (done < count) {
        const long part =
            files_->write(descriptor_, bytes + done, static_cast<std::size_t>(count - done), offset + done);
        if (part < 0 && errno == EINTR) continue;
        if (part <= 0) return part < 0 ? -errno : -EIO;
        done += static_cast<int>(part);
    }
    size_ = std::max(size_, offset + count);
    return count;
}

int OutputFile::read(std::int64_t offset, std::uint8_t* bytes, int count) const {
    for (;;) {
        const ssize_t got = ::pread(descriptor_, bytes, static_cast<std::size_t>(count), offset);
        if (got >= 0) return static_cast<int>(got);
        if (errno != EINTR) return -errno;
    }
}

std::optional<NSError> OutputFile::publish() {
    const auto fail = [] { return systemError("The file cannot be written", errno); };
    if (files_->synchronise(descriptor_) != 0) return fail();
    if (temporaryPath_.empty()) {
        // The file first gets a temporary name, because a link cannot replace a file, but a rename can.
        std::random_device random;
        constexpr int attempts = 16;
        for (int attempt = 0; attempt < attempts && temporaryPath_.empty(); ++attempt) {
            const std::string name = folderOf(path_) + "/.converting-" + std::to_string(random());
            if (files_->link(descriptor_, name) == 0) {
                temporaryPath_ = name;
            } else if (errno != EEXIST) {
                return fail();
            }
        }
        if (temporaryPath_.empty()) return fail();
    }
    if (files_->rename(temporaryPath_, path_) != 0) return fail();
    isPublished_ = true;
    return std::nullopt;
}

}  // namespace ostrel
