#include "platform/graphics/ImageDecoder.h"

#include <mutex>
#include <utility>

namespace ostrel {

namespace {

struct InstalledDecoder {
    std::mutex mutex;  // guards decoder
    ImageDecoder decoder;
};

InstalledDecoder& currentDecoder() {
    // Never destroyed, because threads may still decode while the process ends.
    static InstalledDecoder& currentDecoder = *new InstalledDecoder;
    return currentDecoder;
}

}  // namespace

void installImageDecoder(ImageDecoder decoder) {
    const std::lock_guard lock(currentDecoder().mutex);
    std::swap(currentDecoder().decoder, decoder);
}

ImageDecoder installedImageDecoder() {
    const std::lock_guard lock(currentDecoder().mutex);
    return currentDecoder().decoder;
}

}  // namespace ostrel
