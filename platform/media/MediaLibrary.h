#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

enum class MediaKind { picture, clip };

/// One picture or clip of the user.
struct MediaLibraryItem {
    std::string path;
    MediaKind kind = MediaKind::picture;
    std::int64_t modified = 0;  ///< nanoseconds of the file system's clock; only their order matters

    friend bool operator==(const MediaLibraryItem&, const MediaLibraryItem&) = default;
};

/// The user's own pictures and clips: the files of known extensions in the host's folders and their
/// subfolders. Immutable; any thread.
class MediaLibrary final {
public:
    /// Levels of folders that are searched; deeper folders usually belong to programs and not to the user.
    static constexpr int greatestDepth = 8;
    /// The limits of one search: directory entries that it looks at, and items that it returns.
    static constexpr std::size_t mostEntries = 200'000, mostItems = 50'000;

    struct Folders {
        std::vector<std::string> pictures, clips;
    };
    explicit MediaLibrary(Folders folders) : folders_(std::move(folders)) {}

    struct Contents {
        std::vector<MediaLibraryItem> items;  ///< the newest first, each file once
        bool isIncomplete = false;            ///< a folder could not be read, or a limit was reached
    };
    /// Searches the folders for these kinds; ends early once `isStopped` is true. Skips hidden files and
    /// folders, and symbolic links to folders; a missing folder counts as empty. Blocks: not for the main
    /// thread.
    Contents contents(bool pictures, bool clips, const std::atomic<bool>& isStopped) const;

    /// Decides by the extension of the path, in lower or upper case.
    static bool isOfKind(const std::string& path, MediaKind kind);
    /// The extensions of a kind, in lower case and without the dot.
    static const std::vector<std::string>& extensions(MediaKind kind);

    /// Null when the host has installed no library.
    static std::shared_ptr<const MediaLibrary> installed();
    static void install(std::shared_ptr<const MediaLibrary> library);

private:
    Folders folders_;
};

}  // namespace ostrel
