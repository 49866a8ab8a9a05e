#include "serverframework/media/MediaDiskCache.h"

#include "platform/foundation/resources/Files.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <filesystem>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace ostrel {

namespace {

constexpr std::size_t blockBytes = 4096;
/// A sweep reduces the cache to this part of its bounds, so that not every new medium causes a sweep.
constexpr double keptPart = 0.9;

double systemSeconds() {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch()).count();
}

/// The current time. The clock of UTIME_NOW ticks too slowly to order files that are used shortly after each other.
timespec systemTime() {
    timespec time{};
    ::clock_gettime(CLOCK_REALTIME, &time);
    return time;
}

double secondsOf(const timespec& time) { return static_cast<double>(time.tv_sec) + time.tv_nsec / 1e9; }

std::size_t onDisk(std::size_t bytes) { return (bytes + blockBytes - 1) / blockBytes * blockBytes; }

/// Opens a file and locks it until the object's end, unless another process holds the lock.
class FileLock final {
public:
    explicit FileLock(const std::string& path, int flags) : descriptor_(::open(path.c_str(), flags | O_CLOEXEC, 0600)) {
        isHeld_ = descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0;
    }
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;
    ~FileLock() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    bool isHeld() const { return isHeld_; }

private:
    int descriptor_;
    bool isHeld_ = false;
};

struct KeptFile {
    std::string path;
    double lastUsed;
    std::size_t bytes;
};

}  // namespace

MediaDiskCache::MediaDiskCache(std::string folder, Limits limits) : folder_(std::move(folder)), limits_(limits) {}

std::string MediaDiskCache::defaultFolder() {
    const char* set = std::getenv("XDG_CACHE_HOME");
    // The XDG rules ignore a relative path.
    const std::string base = set && *set == '/' ? std::string(set) : NSHomeDirectory() + "/.cache";
    return base + "/ostrel/media";
}

bool MediaDiskCache::isChecked(const std::string& path, const Checked& facts) const {
    const std::lock_guard lock(mutex_);
    const auto found = checked_.find(path);
    return found != checked_.end() && found->second.inode == facts.inode && found->second.checksum == facts.checksum;
}

void MediaDiskCache::noteChecked(const std::string& path, const Checked& facts) {
    const std::lock_guard lock(mutex_);
    if (checked_.size() > limits_.maximumFiles) checked_.clear();
    checked_[path] = facts;
}

MediaDiskCache::Lookup MediaDiskCache::find(const std::string& url, Checking checking) {
    const std::string path = pathFor(url);
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return {};
    const Data file = Data::mapFile(path);
    if (!file) return {};
    auto medium = MediumFile::read(file);
    if (!medium) {
        ::unlink(path.c_str());
        return {};
    }
    // Two addresses may have the same file name, by chance or because somebody chose them so.
    if (medium->url != url) return {};
    const Checked facts{status.st_ino, medium->checksum};
    if (!isChecked(path, facts)) {
        if (checking == Checking::small && medium->body.size() > limits_.checkedAtOnce) {
            return {std::nullopt, true};
        }
        const auto intact = isIntact(*medium, path, facts.inode);
        if (intact == false) ::unlink(path.c_str());
        if (!intact.value_or(false)) return {};
        noteChecked(path, facts);
    }
    const timespec times[2] = {systemTime(), {0, UTIME_OMIT}};
    ::utimensat(AT_FDCWD, path.c_str(), times, 0);

    Medium found{medium->body, medium->facts};
    if (found.data.size() <= limits_.readAtOnce) found.data = Data::copy(found.data.span());
    const auto now = static_cast<std::int64_t>(systemSeconds());
    found.facts.freshUntil = std::min<std::int64_t>(status.st_mtim.tv_sec, now + FreshnessLimits::longest);
    return {std::move(found), false};
}

std::optional<bool> MediaDiskCache::isIntact(const MediumFile& medium, const std::string& path,
                                             std::uint64_t inode) const {
    if (medium.body.size() <= limits_.readAtOnce) return MediumFile::checksumOf(medium.body) == medium.checksum;
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return std::nullopt;
    std::optional<bool> intact;
    struct stat status {};
    if (::fstat(descriptor, &status) == 0 && status.st_ino == inode) {
        intact = MediumFile::checksumOf(descriptor, medium.body.size()) == medium.checksum;
    }
    ::close(descriptor);
    return intact;
}

std::optional<PartialFile> MediaDiskCache::newFile() const {
    auto file = PartialFile::create(folder_);
    if (file || errno != ENOENT) return file;
    // The folder does not exist: this is the first medium, or a user removed the caches.
    std::error_code error;
    std::filesystem::create_directories(folder_, error);
    std::filesystem::permissions(folder_, std::filesystem::perms::owner_all, error);
    return PartialFile::create(folder_);
}

void MediaDiskCache::keep(const std::string& url, const MediumFacts& facts, const Data& data,
                          std::optional<PartialFile> file) {
    const std::lock_guard lock(writing_);
    if (data.isNull() || data.size() > limits_.maximumBytes / 2) return;
    const auto checksum =
        file ? MediumFile::checksumOf(file->descriptor(), data.size()) : std::optional(MediumFile::checksumOf(data));
    if (!checksum) return;
    const std::string trailer = MediumFile::trailer(url, facts, data.size(), *checksum);
    const std::size_t size = onDisk(data.size() + trailer.size());
    makeRoom(size);
    // Another process is sweeping, which makes room for the next medium.
    if (*totalBytes_ + size > limits_.maximumBytes) return;
    if (!file) {
        auto made = newFile();
        if (!made || !made->append(data.view())) return;
        file.emplace(std::move(*made));
    }
    if (!file->append(trailer)) return;
    const std::string path = pathFor(url);
    struct stat replaced {};
    const bool replaces = ::stat(path.c_str(), &replaced) == 0;
    if (!file->synchronise() || !file->setTimes(systemSeconds(), static_cast<double>(facts.freshUntil)) ||
        !file->moveTo(path)) {
        return;
    }
    writtenBytes_ += size;
    *totalBytes_ += size;
    if (replaces) {
        *totalBytes_ -= std::min(*totalBytes_, onDisk(static_cast<std::size_t>(replaced.st_size)));
    } else {
        ++totalFiles_;
    }
    struct stat status {};
    if (::stat(path.c_str(), &status) == 0) {
        noteChecked(path, {status.st_ino, *checksum});
    }
}

void MediaDiskCache::refresh(const std::string& url, const MediumFacts& facts) {
    const timespec times[2] = {systemTime(), {static_cast<std::time_t>(facts.freshUntil), 0}};
    ::utimensat(AT_FDCWD, pathFor(url).c_str(), times, 0);
}

void MediaDiskCache::remove(const std::string& url) { ::unlink(pathFor(url).c_str()); }

void MediaDiskCache::makeRoom(std::size_t bytes) {
    const bool isDue = !totalBytes_ || *totalBytes_ + bytes > limits_.maximumBytes ||
                       totalFiles_ >= limits_.maximumFiles || writtenBytes_ > limits_.maximumBytes / 16;
    if (isDue) sweep(bytes);
}

void MediaDiskCache::sweep(std::size_t bytes) {
    std::vector<KeptFile> kept;
    std::size_t total = 0;
    const double now = systemSeconds();
    // One process sweeps at a time. While another one sweeps, this process only counts.
    const FileLock sweeping(folder_ + "/lock", O_RDWR | O_CREAT);
    std::error_code error;
    std::filesystem::directory_iterator entry(folder_, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        const std::string path = entry->path().string();
        struct stat status {};
        if (::lstat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
        if (MediumFile::isName(name)) {
            const std::size_t size = onDisk(static_cast<std::size_t>(status.st_size));
            kept.push_back({path, secondsOf(status.st_atim), size});
            total += size;
        } else if (name.ends_with(PartialFile::extension) &&
                   now - secondsOf(status.st_mtim) > limits_.leftOverSeconds && FileLock(path, O_RDWR).isHeld()) {
            ::unlink(path.c_str());
        }
    }
    std::size_t files = kept.size();
    if (sweeping.isHeld() && (total + bytes > limits_.maximumBytes || files >= limits_.maximumFiles)) {
        std::sort(kept.begin(), kept.end(),
                  [](const KeptFile& left, const KeptFile& right) { return left.lastUsed < right.lastUsed; });
        const auto mostBytes = static_cast<std::size_t>(static_cast<double>(limits_.maximumBytes) * keptPart);
        const auto mostFiles = static_cast<std::size_t>(static_cast<double>(limits_.maximumFiles) * keptPart);
        for (const KeptFile& file : kept) {
            if (total + bytes <= mostBytes && files <= mostFiles) break;
            if (::unlink(file.path.c_str()) != 0 && errno != ENOENT) continue;
            total -= file.bytes;
            --files;
        }
    }
    totalBytes_ = total;
    totalFiles_ = files;
    writtenBytes_ = 0;
}

}  // namespace ostrel
