#include "platform/media/MediaThumbnails.h"

#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSThread.h"
#include "platform/graphics/ImageThumbnail.h"
#include "platform/media/AVAssetImageGenerator.h"

#include <utility>

namespace ostrel {

namespace {

std::size_t costOf(const MediaThumbnail& thumbnail) {
    constexpr std::size_t bookkeeping = 512;
    if (!thumbnail.image) return bookkeeping;
    const ImageHeader& header = thumbnail.image->header();
    return bookkeeping + static_cast<std::size_t>(header.pixelWidth) * static_cast<std::size_t>(header.pixelHeight) *
                             CGImage::bytesPerPixel;
}

MediaThumbnail unusable(std::string problem) {
    return {.image = nullptr, .duration = 0, .problem = std::move(problem)};
}

MediaThumbnail thumbnailOfClip(const std::string& path, int side) {
    std::optional<NSError> error;
    const auto asset = AVAsset::assetWithURL(NSURL::fileURLWithPath(path), &error);
    const AVAssetTrack* const track = asset ? asset->firstTrack(AVMediaType::video) : nullptr;
    if (!asset) return unusable(error ? error->localizedDescription : "It is no clip.");
    if (!track) return unusable("There is no video in it.");
    const auto generator = AVAssetImageGenerator::assetImageGeneratorWithAsset(asset);
    const auto frame = generator ? generator->copyCGImageAtTime(CMTimeMake(0, 1), &error) : nullptr;
    if (!frame) return unusable(error ? error->localizedDescription : "No picture of it can be decoded.");
    return {.image = UIImage::imageWithCGImage(squareThumbnail(*frame, track->preferredTransform, side)),
            .duration = asset->duration().seconds(),
            .problem = {}};
}

}  // namespace

MediaThumbnail MediaThumbnails::make(const Data& picture, int side) {
    std::string problem;
    auto image = UIImage::imageWithCGImage(squareThumbnail(picture, side, &problem));
    // Encodes the picture here instead of on the thread that first shows it.
    if (image) image->representation(1);
    return {.image = std::move(image), .duration = 0, .problem = std::move(problem)};
}

MediaThumbnail MediaThumbnails::make(const MediaLibraryItem& item, int side) {
    if (item.kind == MediaKind::clip) {
        MediaThumbnail thumbnail = thumbnailOfClip(item.path, side);
        if (thumbnail.image) thumbnail.image->representation(1);
        return thumbnail;
    }
    std::string problem;
    // Read and not mapped: a mapped file that becomes shorter during decoding would end the process.
    const Data data = readFile(item.path, largestFile, &problem);
    return data ? make(data, side) : unusable(std::move(problem));
}

bool MediaThumbnails::setSide(int side) {
    if (side == std::exchange(side_, side)) return false;
    kept_.clear();
    return true;
}

const MediaThumbnail* MediaThumbnails::find(const std::string& path) { return kept_.find(path); }

void MediaThumbnails::request(const MediaLibraryItem& item, Handler handler) {
    forget(item.path);
    const std::uint64_t number = nextNumber_++;
    waiting_[number] = item.path;
    requests_[item.path] = {.item = item, .handler = std::move(handler), .number = number};
    startNext();
}

void MediaThumbnails::forget(const std::string& path) {
    const auto found = requests_.find(path);
    if (found == requests_.end()) return;
    waiting_.erase(found->second.number);
    requests_.erase(found);
}

void MediaThumbnails::stop() {
    waiting_.clear();
    requests_.clear();
}

void MediaThumbnails::startNext() {
    while (running_ < mostThreads && !waiting_.empty()) {
        const auto last = std::prev(waiting_.end());
        Request& request = requests_.at(last->second);
        waiting_.erase(last);
        ++running_;
        NSThread::detachNewThread(
            [weak = weak_from_this(), item = request.item, number = request.number, side = side_] {
                MediaThumbnail made = make(item, side);
                if (!RunLoop::hasMain()) return;
                RunLoop::main().perform([weak, path = item.path, number, side, made = std::move(made)]() mutable {
                    if (const auto self = weak.lock()) self->finished(path, number, side, std::move(made));
                });
            });
    }
}

void MediaThumbnails::finished(const std::string& path, std::uint64_t number, int side, MediaThumbnail thumbnail) {
    --running_;
    if (side == side_) kept_.insert(path, thumbnail, costOf(thumbnail));
    const auto found = requests_.find(path);
    if (found != requests_.end() && found->second.number == number) {
        const Handler handler = std::move(found->second.handler);
        requests_.erase(found);
        handler(thumbnail);
    }
    startNext();
}

}  // namespace ostrel
