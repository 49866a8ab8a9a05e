#include "platform/graphics/ImageDecoder.h"

#include <mutex>
#include <utility>

namespace ostrel {

namespace {

struct Installed {
    std::mutex mutex;  // guards decoder
    ImageDecoder decoder;
};

Installed& current() {
    // Never destroyed, because threads may still decode while the process ends.
    static Installed& current = *new Installed;
    return current;
}

}  // namespace

void installImageDecoder(ImageDecoder decoder) {
    const std::lock_guard lock(current().mutex);
    std::swap(current().decoder, decoder);
}

ImageDecoder installedImageDecoder() {
    const std::lock_guard lock(current().mutex);
    return current().decoder;
}

}  // namespace ostrel
