#include "articleserver/media/MediaFolder.h"

#include "articleserver/common/ServerLimits.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <unordered_set>

namespace articleserver {

namespace {

constexpr std::size_t nameDigits = 32;
constexpr std::size_t writeBlock = 256 * 1024;

std::string_view contentTypeOf(std::string_view extension) {
    if (extension == "jpg") return "image/jpeg";
    if (extension == "png") return "image/png";
    if (extension == "mp4") return "video/mp4";
    return {};
}

std::string randomName(std::string_view extension) {
    std::array<unsigned char, nameDigits / 2> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    std::array<char, nameDigits + 1> digits{};
    sodium_bin2hex(digits.data(), digits.size(), bytes.data(), bytes.size());
    return std::string(digits.data()) + "." + std::string(extension);
}

ServerFailure storageFailure(int error) {
    logServerError(std::string("a media file could not be written: ") + std::strerror(error));
    if (error == ENOSPC || error == EDQUOT || error == EFBIG) {
        return {ServerFault::storageFull, "The server's storage is full."};
    }
    return {ServerFault::internal, "The server could not store the file."};
}

bool writeAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

}  // namespace

bool MediaFolder::isName(std::string_view name) {
    if (name.size() <= nameDigits + 1 || name[nameDigits] != '.') return false;
    std::string_view digits = name.substr(0, nameDigits);
    bool isHex = digits.find_first_not_of("0123456789abcdef") == std::string_view::npos;
    return isHex && !contentTypeOf(name.substr(nameDigits + 1)).empty();
}

ServerResult<void> MediaFolder::prepare(const std::vector<std::string>& named) {
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    if (error) return ServerFailure{ServerFault::internal, "Cannot create the folder of media files."};
    std::unordered_set<std::string> kept(named.begin(), named.end());
    std::vector<std::filesystem::path> orphans;
    for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end;
         entry.increment(error)) {
        std::string name = entry->path().filename();
        // A file whose name this class cannot have made stays.
        bool isOurs = isName(name) || (name.ends_with(".part") && isName(name.substr(0, name.size() - 5)));
        if (isOurs && !kept.contains(name)) orphans.push_back(entry->path());
    }
    for (const auto& path : orphans) std::filesystem::remove(path, error);
    return {};
}

ServerResult<std::string> MediaFolder::add(std::string_view bytes, std::string_view extension) {
    std::string name = randomName(extension);
    const std::string path = folder_ / name;
    const std::string partial = path + ".part";
    int descriptor = ::open(partial.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (descriptor < 0) return storageFailure(errno);
    bool isWritten = writeAll(descriptor, bytes) && ::fsync(descriptor) == 0;
    int error = errno;
    ::close(descriptor);
    if (isWritten && ::rename(partial.c_str(), path.c_str()) != 0) {
        isWritten = false;
        error = errno;
    }
    if (!isWritten) {
        ::unlink(partial.c_str());
        return storageFailure(error);
    }
    return name;
}

ServerResult<std::unique_ptr<IncomingFile>> MediaFolder::receive(std::string_view extension) {
    std::string name = randomName(extension);
    std::string path = (folder_ / name).string() + ".part";
    int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (descriptor < 0) return storageFailure(errno);
    return std::unique_ptr<IncomingFile>(new IncomingFile(descriptor, std::move(path), std::move(name)));
}

std::uint64_t MediaFolder::freeBytes() const {
    struct statvfs facts {};
    if (::statvfs(folder_.c_str(), &facts) != 0) return std::numeric_limits<std::uint64_t>::max();
    const std::uint64_t free = static_cast<std::uint64_t>(facts.f_bavail) * facts.f_frsize;
    return free - std::min(free, ServerLimits::freeSpace);
}

IncomingFile::~IncomingFile() {
    if (mapping_) ::munmap(mapping_, static_cast<std::size_t>(written_));
    ::close(descriptor_);
    if (!path_.empty()) ::unlink(path_.c_str());
}

ServerResult<void> IncomingFile::append(std::string_view bytes) {
    size_ += bytes.size();
    pending_.append(bytes);
    if (pending_.size() < writeBlock) return {};
    return flush();
}

ServerResult<void> IncomingFile::flush() {
    if (!writeAll(descriptor_, pending_)) return storageFailure(errno);
    // The kernel begins to write now, while the rest arrives, so that the fsync at the end is short.
    if (!pending_.empty()) {
        ::sync_file_range(descriptor_, static_cast<off_t>(written_), static_cast<off_t>(pending_.size()),
                          SYNC_FILE_RANGE_WRITE);
    }
    written_ += pending_.size();
    pending_.clear();
    return {};
}

ServerResult<std::string> IncomingFile::keep() {
    auto flushed = flush();
    if (!flushed) return flushed.failure();
    const std::string path = path_.substr(0, path_.size() - std::string_view(".part").size());
    if (::fsync(descriptor_) != 0 || ::rename(path_.c_str(), path.c_str()) != 0) return storageFailure(errno);
    path_.clear();
    return name_;
}

std::string_view IncomingFile::bytes() {
    if (!mapping_ && written_ > 0) {
        void* mapping = ::mmap(nullptr, static_cast<std::size_t>(written_), PROT_READ, MAP_PRIVATE, descriptor_, 0);
        if (mapping == MAP_FAILED) return {};
        mapping_ = mapping;
    }
    return {static_cast<const char*>(mapping_), mapping_ ? static_cast<std::size_t>(written_) : 0};
}

std::optional<MediaFolder::File> MediaFolder::find(std::string_view name) const {
    if (!isName(name)) return std::nullopt;
    File file;
    file.path = folder_ / std::string(name);
    struct stat facts {};
    if (::stat(file.path.c_str(), &facts) != 0 || !S_ISREG(facts.st_mode)) return std::nullopt;
    file.contentType = contentTypeOf(name.substr(nameDigits + 1));
    // The name is unique and the content of the file never changes, so the name identifies the content.
    file.entityTag = "\"" + std::string(name.substr(0, nameDigits)) + "\"";
    file.size = static_cast<std::uint64_t>(facts.st_size);
    file.modified = static_cast<ServerTime>(facts.st_mtim.tv_sec) * 1000;
    return file;
}

void MediaFolder::remove(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!isName(name)) continue;
        std::string path = folder_ / name;
        if (::unlink(path.c_str()) != 0 && errno != ENOENT) {
            logServerError(std::string("a media file could not be removed: ") + std::strerror(errno));
        }
    }
}

}  // namespace articleserver
