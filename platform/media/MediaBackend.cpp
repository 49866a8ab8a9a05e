#include "platform/media/MediaBackend.h"

#include <mutex>

namespace ostrel {

namespace {

struct Installed {
    std::mutex mutex;  // guards backend
    std::shared_ptr<MediaBackend> backend;
};

Installed& current() {
    static Installed current;
    return current;
}

}  // namespace

std::shared_ptr<MediaBackend> MediaBackend::installed() {
    const std::lock_guard lock(current().mutex);
    return current().backend;
}

void MediaBackend::install(std::shared_ptr<MediaBackend> backend) {
    {
        const std::lock_guard lock(current().mutex);
        std::swap(current().backend, backend);
    }
    // The former backend is released here, outside of the lock.
}

}  // namespace ostrel
