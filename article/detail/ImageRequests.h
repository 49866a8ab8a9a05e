#pragma once

#include "platform/foundation/values/Data.h"

#include <atomic>
#include <functional>
#include <memory>
#include <string>

namespace ostrel {

/// The requests for one image of an article: its thumbnail, then the full image. Any thread may send them.
/// What the server framework has in its cache is shown in the next turn of the main run loop, what it fetches
/// when it answers.
class ImageRequests final : public std::enable_shared_from_this<ImageRequests> {
public:
    /// Shows the bytes of a picture. Called on the main thread; copied and destroyed on any, so that it holds
    /// views weakly.
    using Show = std::function<void(const Data& picture)>;
    /// Whether the full image's request has been answered, well or not; shared by all requests of a row. A
    /// value on its own, so no order with other data is needed.
    using Completed = std::shared_ptr<std::atomic<bool>>;

    ImageRequests(std::string thumbnail, std::string image, Completed fullImageHasCompleted, Show show);

    /// Requests the thumbnail, then the full image.
    void sendBoth();
    void sendFullImage();

private:
    void showSoon(const Data& picture);

    const std::string thumbnail_, image_;
    const Completed fullImageHasCompleted_;
    const Show show_;
};

}  // namespace ostrel
