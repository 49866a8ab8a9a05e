#include "article/detail/ImageRequests.h"

#include "article/server/OstrelRequestManager.h"
#include "platform/foundation/runloop/RunLoop.h"

#include <utility>

namespace ostrel {

ImageRequests::ImageRequests(std::string thumbnail, std::string image, Completed fullImageHasCompleted, Show show)
    : thumbnail_(std::move(thumbnail)),
      image_(std::move(image)),
      fullImageHasCompleted_(std::move(fullImageHasCompleted)),
      show_(std::move(show)) {}

void ImageRequests::showSoon(const Data& picture) {
    if (!picture || !RunLoop::hasMain()) return;
    RunLoop::main().perform([self = shared_from_this(), picture] { self->show_(picture); });
}

void ImageRequests::sendBoth() {
    auto& manager = OstrelRequestManager::defaultOstrelRequestManager();
    showSoon(manager.request(thumbnail_, [self = shared_from_this()](const Data& picture, bool loaded, const auto&) {
        // A thumbnail that comes late must not cover the full image.
        if (loaded && !self->fullImageHasCompleted_->load(std::memory_order_relaxed)) self->show_(picture);
    }));
    sendFullImage();
}

void ImageRequests::sendFullImage() {
    fullImageHasCompleted_->store(false, std::memory_order_relaxed);
    auto& manager = OstrelRequestManager::defaultOstrelRequestManager();
    showSoon(manager.request(image_, [self = shared_from_this()](const Data& picture, bool loaded, const auto&) {
        if (loaded) self->show_(picture);
        self->fullImageHasCompleted_->store(true, std::memory_order_relaxed);
    }));
}

}  // namespace ostrel
