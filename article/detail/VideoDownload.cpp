#include "article/detail/VideoDownload.h"

#include "article/detail/VideoFile.h"
#include "article/server/OstrelRequestManager.h"

namespace ostrel {

bool VideoDownload::start(const std::string& address) {
    const auto request = ++requestCount_;
    awaited_ = request;
    const Data present = OstrelRequestManager::defaultOstrelRequestManager().request(
        address, [weak = weak_from_this(), request](const Data& video, bool loaded, const auto&) {
            const auto self = weak.lock();
            if (!self || self->awaited_ != request || !loaded || !video) return;
            self->handlers_.arrived();
            self->write(video);
        });
    if (!present) return true;
    write(present);
    return false;
}

void VideoDownload::write(const Data& video) {
    // A new number: the server's answer that follows a video from the cache must not start that video a
    // second time.
    const auto request = ++requestCount_;
    awaited_ = request;
    const auto weak = weak_from_this();
    writeCurrentVideoFile(
        video,
        [weak, request] {
            const auto self = weak.lock();
            return self && self->awaited_ == request;
        },
        [weak](const std::string& path) {
            const auto self = weak.lock();
            if (!self) return;
            self->awaited_.reset();
            self->handlers_.ready(path);
        });
}

bool VideoDownload::forget() {
    if (!awaited_) return false;
    awaited_.reset();
    return true;
}

}  // namespace ostrel
