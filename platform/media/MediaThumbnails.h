#pragma once

#include "platform/foundation/values/LeastRecentlyUsedCache.h"
#include "platform/graphics/UIImage.h"
#include "platform/media/MediaLibrary.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>

namespace ostrel {

/// A small picture of a medium.
struct MediaThumbnail {
    std::shared_ptr<const UIImage> image;  ///< a square; null when the file cannot be used
    double duration = 0;                   ///< the duration of a clip in seconds; 0 when it is not known
    std::string problem;                   ///< an English sentence that says why the file cannot be used
};

/// Makes the thumbnails of media on threads of its own, a few at a time, the most recent request first, in a
/// cache that drops the least recently used thumbnails. Main thread.
class MediaThumbnails final : public std::enable_shared_from_this<MediaThumbnails> {
public:
    static constexpr int mostThreads = 2;
    /// Bytes of the cached thumbnails, counted as bitmaps: about four screens of a large window.
    static constexpr std::size_t mostBytes = 24 << 20;
    /// Bytes of a picture's file; larger than those of cameras.
    static constexpr std::size_t largestFile = 256 << 20;

    /// The side of the squares, in pixels. A change empties the cache. True when the side has changed.
    bool setSide(int side);

    /// Null when the cache does not have the thumbnail (any more).
    const MediaThumbnail* find(const std::string& path);
    using Handler = std::function<void(const MediaThumbnail&)>;
    /// `handler` runs once, in a later turn, unless `forget` is called before. One request for each path at a
    /// time.
    void request(const MediaLibraryItem& item, Handler handler);
    void forget(const std::string& path);
    /// Drops all requests; the results of running ones are discarded.
    void stop();

    /// Makes the thumbnail on the calling thread.
    static MediaThumbnail make(const MediaLibraryItem& item, int side);
    /// Makes the thumbnail of a picture's encoded bytes.
    static MediaThumbnail make(const Data& picture, int side);

private:
    struct Request {
        MediaLibraryItem item;
        Handler handler;
        std::uint64_t number = 0;
    };
    void startNext();
    void finished(const std::string& path, std::uint64_t number, int side, MediaThumbnail thumbnail);

    int side_ = 1;
    int running_ = 0;
    std::uint64_t nextNumber_ = 1;
    std::unordered_map<std::string, Request> requests_;
    std::map<std::uint64_t, std::string> waiting_;  ///< paths by request number; the largest number is next
    LeastRecentlyUsedCache<std::string, MediaThumbnail> kept_{{.totalCost = mostBytes}};
};

}  // namespace ostrel
