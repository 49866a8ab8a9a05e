#pragma once

#include "platform/foundation/values/Data.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ostrel {

/// Downloads the video that its row is about to play into `currentVideoFile()`. Only the last download
/// counts: the result of an earlier one is dropped. The row owns this object; when the row has gone, every
/// result is dropped. Main thread.
class VideoDownload final : public std::enable_shared_from_this<VideoDownload> {
public:
    struct Handlers {
        /// The server has answered with the video, which is being written now. Not called for a video from
        /// the cache.
        std::function<void()> arrived;
        /// The video is in the file at `path`; empty: the file could not be written.
        std::function<void(const std::string& path)> ready;
    };
    explicit VideoDownload(Handlers handlers) : handlers_(std::move(handlers)) {}

    /// False when the server framework has the video in its cache, so that nothing is waited for. A download
    /// that fails calls no handler.
    bool start(const std::string& address);
    /// The video that is being downloaded is not wanted any more. False when there was none.
    bool forget();

private:
    void write(const Data& video);

    const Handlers handlers_;
    /// The number of the download that counts; absent: none does.
    std::optional<std::uint64_t> awaited_;
    std::uint64_t requestCount_ = 0;
};

}  // namespace ostrel
