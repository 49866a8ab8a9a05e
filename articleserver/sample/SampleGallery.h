#pragma once

#include "articleserver/media/MediaFolder.h"
#include "articleserver/sample/SamplePainter.h"

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

namespace ostrel {

/// A picture to be painted and kept as a JPEG file with its thumbnail.
struct PaintOrder {
    SampleScene scene;
    int width;  ///< pixels, as shown
    int height;
    std::uint32_t seed;
    int orientation;        ///< Exif; how the pixels are stored
    std::string file = {};  ///< media names, given by SampleGallery::order
    std::string thumbnail = {};
};

/// Paints the sample pictures behind a server's back, so that it need not wait for them: a picture that is asked for is
/// painted at once, the others follow on a thread of their own. What is still to be painted stands in a file, so that
/// the next start goes on where this one ended. Any thread, except for construction and destruction.
class SampleGallery final {
public:
    /// Reads what an earlier start has left to be painted from `list`, as far as it is among the `named` files that records
    /// refer to. `media` outlives the gallery, which supplies it with the files that it misses.
    SampleGallery(MediaFolder& media, std::filesystem::path list, const std::vector<std::string>& named);
    SampleGallery(const SampleGallery&) = delete;
    SampleGallery& operator=(const SampleGallery&) = delete;
    /// Waits for the picture that is being painted.
    ~SampleGallery();

    /// Takes the orders, gives them their media names and notes them in the list. Before start().
    ServerResult<ServerDone> order(std::vector<PaintOrder>& orders);
    /// Forgets the orders that were taken, and the list.
    void cancel();
    /// Begins to paint, the last order first: those are the newest articles'.
    void start();
    /// Returns when the file of this name is there, or when it is none of the gallery's or cannot be made.
    void supply(std::string_view name);

private:
    enum class State { Waiting, Painting, Painted, Failed };
    struct Work {
        PaintOrder order;
        State state = State::Waiting;
    };

    void take(PaintOrder order);
    void paintAll();
    /// Paints a work that is marked as being painted; the lock is given up meanwhile.
    void paint(std::size_t index, std::unique_lock<std::mutex>& lock);
    bool paintFiles(const PaintOrder& order);

    MediaFolder& media_;
    const std::filesystem::path list_;
    std::mutex mutex_;
    std::condition_variable painted_;
    std::vector<Work> works_;                              ///< guarded by mutex_
    std::unordered_map<std::string, std::size_t> byName_;  ///< guarded by mutex_
    bool stopping_ = false;                                ///< guarded by mutex_
    std::thread thread_;
};

}  // namespace ostrel
