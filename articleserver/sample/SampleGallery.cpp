#include "SampleGallery.h"

#include "ExifOrientation.h"
#include "ServerLimits.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

namespace ostrel {

namespace {

constexpr unsigned mostPainters = 8;
constexpr int imageQuality = 86;
constexpr int thumbnailQuality = 80;

}  // namespace

Gallery paintGallery(MediaFolder& media, const std::vector<PaintOrder>& orders) {
    Gallery gallery;
    gallery.pictures.resize(orders.size());
    std::mutex mutex;  // guards gallery's files and outcome
    std::atomic<std::size_t> next = 0;
    auto add = [&](const std::string& bytes) {
        auto name = media.add(bytes, "jpg");
        std::lock_guard lock(mutex);
        if (name) {
            gallery.files.push_back(*name);
        } else {
            gallery.outcome = name.failure();
            next = orders.size();
        }
        return name ? *name : std::string();
    };
    auto paint = [&] {
        for (std::size_t index = next++; index < orders.size(); index = next++) {
            const PaintOrder& order = orders[index];
            ServerPicture picture = paintScene(order.scene, order.width, order.height, order.seed);
            int orientation = order.orientation;
            gallery.pictures[index] = {
                add(orientation == 1
                        ? picture.jpeg(imageQuality)
                        : picture.oriented(inverseOrientation(orientation)).jpeg(imageQuality, orientation)),
                add(picture.fitted(ServerLimits::thumbnailSide).jpeg(thumbnailQuality))};
        }
    };
    std::vector<std::thread> painters;
    for (unsigned count = 1; count < std::clamp(std::thread::hardware_concurrency(), 1U, mostPainters);
         ++count) {
        painters.emplace_back(paint);
    }
    paint();
    for (std::thread& painter : painters) painter.join();
    return gallery;
}

}  // namespace ostrel
