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

/// What a medium looks like, small.
struct MediaThumbnail {
    std::shared_ptr<const UIImage> image;  ///< a square; null: the file cannot be used
    double duration = 0;                   ///< of a clip, seconds; 0 when it is not known
    std::string problem;                   ///< why it cannot be used, an English sentence
};

/// Makes the thumbnails of media on threads of its own, a few at a time, those asked for last first, and keeps the ones
/// used last. Main thread.
class MediaThumbnails final : public std::enable_shared_from_this<MediaThumbnails> {
public:
    static constexpr int mostThreads = 2;
    /// Bytes of thumbnails kept, as they would be decoded: about four screens of a large window.
    static constexpr std::size_t mostBytes = 24 << 20;
    /// Of a picture's file: beyond any camera's.
    static constexpr std::size_t largestFile = 256 << 20;

    /// `side`: of the squares, in pixels; of others than the present ones nothing is kept. True when it is another one.
    bool setSide(int side);

    /// Null when it is not there (any more).
    const MediaThumbnail* find(const std::string& path);
    using Handler = std::function<void(const MediaThumbnail&)>;
    /// `handler` runs once, in a later turn, unless `forget` comes first. One request for each path at a time.
    void request(const MediaLibraryItem& item, Handler handler);
    void forget(const std::string& path);
    /// Forgets all requests; what is under way ends soon and is dropped.
    void stop();

    /// Made on the calling thread.
    static MediaThumbnail make(const MediaLibraryItem& item, int side);
    /// Of a picture's encoded bytes.
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
    std::map<std::uint64_t, std::string> waiting_;  ///< by number, the largest is next
    LeastRecentlyUsedCache<std::string, MediaThumbnail> kept_{{.totalCost = mostBytes}};
};

}  // namespace ostrel
