#include "platform/media/MediaBackend.h"

#include <mutex>

namespace ostrel {

namespace {

struct InstalledBackend {
    std::mutex mutex;  // guards backend
    std::shared_ptr<MediaBackend> backend;
};

InstalledBackend& currentBackend() {
    static InstalledBackend currentBackend;
    return currentBackend;
}

}  // namespace

std::shared_ptr<MediaBackend> MediaBackend::installed() {
    const std::lock_guard lock(currentBackend().mutex);
    return currentBackend().backend;
}

void MediaBackend::install(std::shared_ptr<MediaBackend> backend) {
    {
        const std::lock_guard lock(currentBackend().mutex);
        std::swap(currentBackend().backend, backend);
    }
    // The former backend is released here, outside of the lock.
}

}  // namespace ostrel
