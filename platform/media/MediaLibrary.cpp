#include "platform/media/MediaLibrary.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace ostrel {

namespace {

namespace files = std::filesystem;

struct InstalledLibrary {
    std::mutex mutex;  // guards library
    std::shared_ptr<const MediaLibrary> library;
};

InstalledLibrary& currentLibrary() {
    static InstalledLibrary current;
    return current;
}

class Search final {
public:
    Search(bool pictures, bool clips, const std::atomic<bool>& isStopped)
        : pictures_(pictures), clips_(clips), isStopped_(isStopped) {}

    void searchFolder(const files::path& folder, int depth) {
        std::error_code failure;
        files::directory_iterator entry(folder, failure);
        if (failure) {
            result_.isIncomplete |= failure != std::errc::no_such_file_or_directory;
            return;
        }
        std::vector<files::path> within;
        for (; entry != files::directory_iterator(); entry.increment(failure)) {
            if (isStopped_.load(std::memory_order_relaxed)) return;
            if (++entries_ > MediaLibrary::mostEntries) {
                result_.isIncomplete = true;
                return;
            }
            look(*entry, within);
        }
        result_.isIncomplete |= static_cast<bool>(failure);
        if (depth >= MediaLibrary::greatestDepth) return;
        for (const files::path& each : within) searchFolder(each, depth + 1);
    }

    MediaLibrary::Contents take() {
        auto& items = result_.items;
        const auto isNewer = [](const MediaLibraryItem& a, const MediaLibraryItem& b) {
            return a.modified != b.modified ? a.modified > b.modified : a.path < b.path;
        };
        if (items.size() > MediaLibrary::mostItems) {
            std::ranges::nth_element(items, items.begin() + MediaLibrary::mostItems, isNewer);
            items.resize(MediaLibrary::mostItems);
            result_.isIncomplete = true;
        }
        std::ranges::sort(items, isNewer);
        return std::move(result_);
    }

private:
    void look(const files::directory_entry& entry, std::vector<files::path>& within) {
        const files::path name = entry.path().filename();
        if (name.native().starts_with('.')) return;
        std::error_code failure;
        // A symbolic link to a folder may lead in a circle and is skipped; a link to a file counts as the
        // file.
        if (entry.is_directory(failure) && !entry.is_symlink(failure)) return within.push_back(entry.path());
        const std::string& path = entry.path().native();
        const bool isPicture = pictures_ && MediaLibrary::isOfKind(path, MediaKind::picture);
        const bool isClip = !isPicture && clips_ && MediaLibrary::isOfKind(path, MediaKind::clip);
        if (!isPicture && !isClip) return;
        if (!entry.is_regular_file(failure) || failure) return;
        const auto modified = entry.last_write_time(failure);
        // The file may have been removed since; and a folder may be listed under more than one name.
        if (failure || !seen_.insert(path).second) return;
        result_.items.push_back(
            {path, isPicture ? MediaKind::picture : MediaKind::clip,
             std::chrono::duration_cast<std::chrono::nanoseconds>(modified.time_since_epoch()).count()});
    }

    const bool pictures_, clips_;
    const std::atomic<bool>& isStopped_;
    std::size_t entries_ = 0;
    std::unordered_set<std::string> seen_;
    MediaLibrary::Contents result_;
};

}  // namespace

MediaLibrary::Contents MediaLibrary::contents(bool pictures, bool clips, const std::atomic<bool>& isStopped) const {
    Search search(pictures, clips, isStopped);
    std::vector<std::string> folders;
    if (pictures) folders = folders_.pictures;
    if (clips) folders.insert(folders.end(), folders_.clips.begin(), folders_.clips.end());
    for (const std::string& folder : folders) {
        std::error_code failure;
        const files::path canonical = files::canonical(folder, failure);
        search.searchFolder(failure ? files::path(folder) : canonical, 1);
    }
    return search.take();
}

const std::vector<std::string>& MediaLibrary::extensions(MediaKind kind) {
    static const std::vector<std::string> pictures{"jpg", "jpeg", "jpe", "jfif", "png", "gif", "webp"};
    // The containers that media backends can read.
    static const std::vector<std::string> clips{"mov", "mp4", "m4v", "qt", "3gp", "3g2", "avi", "mkv", "webm"};
    return kind == MediaKind::picture ? pictures : clips;
}

bool MediaLibrary::isOfKind(const std::string& path, MediaKind kind) {
    const std::size_t dot = path.find_last_of("./");
    if (dot == std::string::npos || path[dot] == '/') return false;
    std::string extension = path.substr(dot + 1);
    for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return std::ranges::find(extensions(kind), extension) != extensions(kind).end();
}

std::shared_ptr<const MediaLibrary> MediaLibrary::installed() {
    const std::lock_guard lock(currentLibrary().mutex);
    return currentLibrary().library;
}

void MediaLibrary::install(std::shared_ptr<const MediaLibrary> library) {
    const std::lock_guard lock(currentLibrary().mutex);
    std::swap(currentLibrary().library, library);
}

}  // namespace ostrel
