#include "platform/graphics/UIImage.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstring>
#include <map>
#include <mutex>

namespace ostrel {

namespace {

constexpr CGFloat symbolSize = 24;

std::uint64_t nextIdentifier() {
    static std::atomic<std::uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

/// The images of files that are in use, by path. Expired entries are removed whenever the map has doubled its
/// size.
class FileCache final {
public:
    std::shared_ptr<const UIImage> find(const std::string& path) {
        const std::lock_guard lock(mutex_);
        const auto entry = entries_.find(path);
        return entry == entries_.end() ? nullptr : entry->second.lock();
    }

    /// Returns the image of the path from now on: `image`, unless another thread has inserted one before.
    std::shared_ptr<const UIImage> insert(const std::string& path, std::shared_ptr<const UIImage> image) {
        const std::lock_guard lock(mutex_);
        std::weak_ptr<const UIImage>& entry = entries_[path];
        if (auto present = entry.lock()) return present;
        entry = image;
        if (entries_.size() > limit_) {
            std::erase_if(entries_, [](const auto& item) { return item.second.expired(); });
            limit_ = std::max<std::size_t>(64, 2 * entries_.size());
        }
        return image;
    }

private:
    std::mutex mutex_;  // guards everything below
    std::map<std::string, std::weak_ptr<const UIImage>> entries_;
    std::size_t limit_ = 64;
};

FileCache& fileCache() {
    static FileCache cache;
    return cache;
}

/// "folder/name.png" and 2: "folder/name@2x.png".
std::string neighbour(const std::string& path, int scale) {
    const std::size_t slash = path.rfind('/');
    std::size_t dot = path.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = path.size();
    return path.substr(0, dot) + "@" + std::to_string(scale) + "x" + path.substr(dot);
}

/// The upright form of `image`, which has this EXIF orientation (TIFF 6.0, tag 274).
std::shared_ptr<const CGImage> upright(std::shared_ptr<const CGImage> image, int orientation) {
    if (!image || orientation <= 1 || orientation > 8) return image;
    const int width = image->width(), height = image->height();
    const bool isTurned = orientation >= 5;
    auto result = isTurned ? CGImage::make(height, width) : CGImage::make(width, height);
    if (!result) return nullptr;
    for (int y = 0; y < result->height(); ++y) {
        for (int x = 0; x < result->width(); ++x) {
            // Whether the upright picture counts the stored rows and columns from their end.
            const int along = isTurned ? y : x, across = isTurned ? x : y;
            const bool isRightFirst = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
            const bool isBottomFirst = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
            const int storedX = isRightFirst ? width - 1 - along : along;
            const int storedY = isBottomFirst ? height - 1 - across : across;
            std::memcpy(result->row(y) + static_cast<std::size_t>(x) * CGImage::bytesPerPixel,
                        image->row(storedY) + static_cast<std::size_t>(storedX) * CGImage::bytesPerPixel,
                        CGImage::bytesPerPixel);
        }
    }
    return result;
}

}  // namespace

UIImage::UIImage(std::vector<Representation> representations, ImageHeader header)
    : representations_(std::move(representations)), header_(header), identifier_(nextIdentifier()) {
    assert(!representations_.empty());
    std::stable_sort(representations_.begin(), representations_.end(),
                     [](const Representation& a, const Representation& b) { return a.scale < b.scale; });
    const CGFloat scale = representations_.front().scale;
    size_ = {header.pixelWidth / scale, header.pixelHeight / scale};
}

UIImage::UIImage(Path path, CGSize size)
    : path_(std::make_unique<Path>(std::move(path))), size_(size), identifier_(nextIdentifier()) {}

UIImage::UIImage(std::shared_ptr<const CGImage> bitmap) : bitmap_(std::move(bitmap)), identifier_(nextIdentifier()) {
    assert(bitmap_);
    header_ = {.format = bitmap_->isOpaque() ? ImageFormat::jpeg : ImageFormat::png,
               .pixelWidth = bitmap_->width(),
               .pixelHeight = bitmap_->height()};
    size_ = {static_cast<CGFloat>(bitmap_->width()), static_cast<CGFloat>(bitmap_->height())};
}

std::shared_ptr<const UIImage> UIImage::imageWithCGImage(std::shared_ptr<const CGImage> bitmap) {
    return bitmap ? std::make_shared<const UIImage>(std::move(bitmap)) : nullptr;
}

std::shared_ptr<const UIImage> UIImage::imageWithData(const Data& data, CGFloat scale) {
    const auto header = ImageHeader::read(data);
    if (!header || !(scale > 0)) return nullptr;
    return std::make_shared<const UIImage>(std::vector<Representation>{{data, scale}}, *header);
}

std::shared_ptr<const UIImage> UIImage::imageWithContentsOfFile(const std::string& path) {
    if (auto present = fileCache().find(path)) return present;
    std::vector<Representation> representations;
    std::optional<ImageHeader> header;
    for (const int scale : {1, 2, 3}) {
        const Data data = Data::mapFile(scale == 1 ? path : neighbour(path, scale));
        const auto read = data.isNull() ? std::nullopt : ImageHeader::read(data);
        if (!read) continue;
        if (!header) header = read;
        representations.push_back({data, static_cast<CGFloat>(scale)});
    }
    if (!header) return nullptr;
    return fileCache().insert(path, std::make_shared<const UIImage>(std::move(representations), *header));
}

std::shared_ptr<const UIImage> UIImage::systemImageNamed(std::string_view name) {
    const std::string key = "symbol:" + std::string(name);
    if (auto present = fileCache().find(key)) return present;
    auto path = symbolPath(name);
    if (!path) return nullptr;
    return fileCache().insert(key, std::make_shared<const UIImage>(std::move(*path), CGSize{symbolSize, symbolSize}));
}

const UIImage::Representation& UIImage::representation(CGFloat scale) const {
    static const Representation none;
    // Near the best quality. Only the screen shows this form; published pictures are encoded from the pixels.
    constexpr double qualityShown = 0.95;
    if (bitmap_) {
        std::call_once(encoded_, [this] {
            Data data = header_.format == ImageFormat::jpeg ? bitmap_->jpeg(qualityShown) : bitmap_->png();
            if (data) representations_.push_back({std::move(data), 1});
        });
    }
    if (representations_.empty()) return none;
    for (const Representation& representation : representations_) {
        if (representation.scale >= scale) return representation;
    }
    return representations_.back();
}

std::shared_ptr<const CGImage> UIImage::cgImage() const {
    if (bitmap_) return bitmap_;
    if (representations_.empty()) return nullptr;
    return upright(CGImage::decode(representations_.front().data), header_.orientation);
}

Data UIImageJPEGRepresentation(const UIImage& image, double quality) {
    const auto bitmap = image.cgImage();
    return bitmap ? bitmap->jpeg(quality) : Data();
}

Data UIImagePNGRepresentation(const UIImage& image) {
    const auto bitmap = image.cgImage();
    return bitmap ? bitmap->png() : Data();
}

}  // namespace ostrel
