#pragma once

#include "platform/foundation/values/LeastRecentlyUsedCache.h"
#include "platform/graphics/UIImage.h"

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <QImage>
#include <thread>
#include <vector>

namespace ostrel {

/// A picture at one size in device pixels.
struct PictureKey {
    std::uint64_t image = 0;
    int width = 0, height = 0;
    friend bool operator==(const PictureKey&, const PictureKey&) = default;
};

struct PictureKeyHash {
    std::size_t operator()(const PictureKey& key) const {
        return static_cast<std::size_t>(key.image * 0x9E3779B97F4A7C15ull) ^
               (static_cast<std::size_t>(key.width) << 20) ^ static_cast<std::size_t>(key.height);
    }
};

/// Decoded pictures at the sizes at which they are shown, at most 32 MiB. Large pictures are decoded on one decoding
/// thread, so that painting does not wait; small ones (icons) on the calling thread. A picture whose decoding would
/// take more than 128 MiB counts as one that cannot be decoded. Of a GIF the first frame is decoded. Any thread.
class PictureStore final {
public:
    /// `decoded` is called on the decoding thread when results wait for `takeDecoded`; only once until they are taken.
    explicit PictureStore(std::function<void()> decoded);
    ~PictureStore();
    PictureStore(const PictureStore&) = delete;
    PictureStore& operator=(const PictureStore&) = delete;

    /// The key for `image` shown at `width` by `height` device pixels; its size never exceeds that of the picture.
    static PictureKey keyFor(const UIImage& image, double width, double height);
    /// The picture is so small that decoding it takes no longer than painting its surroundings.
    static bool isSmall(const UIImage& image, const PictureKey& key);

    /// The decoded picture; null when its bytes cannot be decoded. Decodes on the calling thread when it is not stored.
    QImage obtain(const UIImage& image, const PictureKey& key);
    /// When the picture is stored: the picture, or null if it cannot be decoded; `isKnown` is true. Otherwise null, and
    /// the decoding thread gets a request.
    QImage request(const std::shared_ptr<const UIImage>& image, const PictureKey& key, bool& isKnown);
    std::vector<PictureKey> takeDecoded();
    std::size_t storedBytes() const;

private:
    struct Wanted {
        PictureKey key;
        std::shared_ptr<const UIImage> image;
    };
    static QImage decode(const UIImage& image, const PictureKey& key);
    bool find(const PictureKey& key, QImage& picture);
    void store(const PictureKey& key, const QImage& picture);
    void run();

    const std::function<void()> decoded_;
    // Guards the members below.
    mutable std::mutex mutex_;
    std::condition_variable changed_;
    LeastRecentlyUsedCache<PictureKey, QImage, PictureKeyHash> pictures_;
    // The picture requested last is decoded first.
    std::vector<Wanted> wanted_;
    PictureKey underWay_;
    std::vector<PictureKey> done_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace ostrel
