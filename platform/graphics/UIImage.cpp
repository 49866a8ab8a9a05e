#include "platform/graphics/UIImage.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <map>
#include <mutex>

namespace ostrel {

namespace {

constexpr CGFloat symbolSize = 24;

std::uint64_t nextIdentifier() {
    static std::atomic<std::uint64_t> last{0};
    return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

/// Pictures of files that are in use, by path. Expired entries leave when the map has doubled since they last did.
class FileCache final {
public:
    std::shared_ptr<const UIImage> find(const std::string& path) {
        const std::lock_guard lock(mutex_);
        const auto entry = entries_.find(path);
        return entry == entries_.end() ? nullptr : entry->second.lock();
    }

    /// The image that the path has from now on: `image`, unless another thread was first.
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
    return fileCache().insert(
        key, std::make_shared<const UIImage>(std::move(*path), CGSize{symbolSize, symbolSize}));
}

const UIImage::Representation& UIImage::representation(CGFloat scale) const {
    static const Representation none;
    if (representations_.empty()) return none;
    for (const Representation& representation : representations_) {
        if (representation.scale >= scale) return representation;
    }
    return representations_.back();
}

}  // namespace ostrel
