#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

enum class MediaKind { picture, clip };

/// One picture or clip of the user's.
struct MediaLibraryItem {
    std::string path;
    MediaKind kind = MediaKind::picture;
    std::int64_t modified = 0;  ///< nanoseconds of the file system's clock, only to be compared

    friend bool operator==(const MediaLibraryItem&, const MediaLibraryItem&) = default;
};

/// The user's own pictures and clips: the files of a known kind in the folders that the host names, and in the folders
/// in these. Immutable; any thread.
class MediaLibrary final {
public:
    /// Folders within folders: what is kept deeper is a program's rather than the user's.
    static constexpr int greatestDepth = 8;
    /// Entries looked at in one search, and items it gives: more than anybody scrolls through.
    static constexpr std::size_t mostEntries = 200'000, mostItems = 50'000;

    struct Folders {
        std::vector<std::string> pictures, clips;
    };
    explicit MediaLibrary(Folders folders) : folders_(std::move(folders)) {}

    struct Contents {
        std::vector<MediaLibraryItem> items;  ///< the newest first, each file once
        bool isIncomplete = false;            ///< a folder could not be read, or there was too much
    };
    /// Searches the folders for these kinds; ends early once `isStopped`. Hidden files and folders, and folders reached by
    /// a link, are left out; folders that do not exist count as empty ones. Blocks: not for the main thread.
    Contents contents(bool pictures, bool clips, const std::atomic<bool>& isStopped) const;

    /// By the extension of its name, in any case.
    static bool isOfKind(const std::string& path, MediaKind kind);
    /// The extensions of a kind, lower case, without the dot.
    static const std::vector<std::string>& extensions(MediaKind kind);

    /// Null when the host has installed none.
    static std::shared_ptr<const MediaLibrary> installed();
    static void install(std::shared_ptr<const MediaLibrary> library);

private:
    Folders folders_;
};

}  // namespace ostrel
