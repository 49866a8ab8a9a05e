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

/// Decoded pictures at the sizes they are shown, at most 32 MiB of them. Large ones are decoded on a thread of their own,
/// so that painting does not wait for them; small ones (icons) by whoever asks. A picture that would take more than
/// 128 MiB to decode is one that cannot be decoded. Of a GIF it is the first frame. Any thread.
class PictureStore final {
public:
    /// `decoded` is called from the decoding thread when results wait for `takeDecoded`; once until they were taken.
    explicit PictureStore(std::function<void()> decoded);
    ~PictureStore();
    PictureStore(const PictureStore&) = delete;
    PictureStore& operator=(const PictureStore&) = delete;

    /// The key for `image` shown `width` by `height` device pixels large: never larger than the picture itself.
    static PictureKey keyFor(const UIImage& image, double width, double height);
    /// So small that decoding it is no slower than painting around it.
    static bool isSmall(const UIImage& image, const PictureKey& key);

    /// The decoded picture, null when its bytes cannot be decoded. Decodes now when it is not stored.
    QImage obtain(const UIImage& image, const PictureKey& key);
    /// The decoded picture when it is stored (`isKnown` true; null when it cannot be decoded), else asks for it.
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
    mutable std::mutex mutex_;  // guards all below
    std::condition_variable changed_;
    LeastRecentlyUsedCache<PictureKey, QImage, PictureKeyHash> pictures_;
    std::vector<Wanted> wanted_;  // the last asked for is decoded first
    PictureKey underWay_;
    std::vector<PictureKey> done_;
    bool stopping_ = false;
    std::thread thread_;
};

}  // namespace ostrel
