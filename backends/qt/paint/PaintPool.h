#pragma once

#include "backends/qt/paint/DisplayList.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <QImage>
#include <QRect>
#include <thread>
#include <vector>

namespace ostrel {

/// One tile of one surface to be painted.
struct PaintJob {
    std::uint64_t surface = 0;
    int tile = 0;
    std::uint64_t version = 0;
    std::shared_ptr<const DisplayList> list;
    QRect pixels;
    double distance = 0;  ///< points from the visible area; 0: visible. The nearest is painted first
};

struct PaintResult {
    std::uint64_t surface = 0;
    int tile = 0;
    std::uint64_t version = 0;
    QImage picture;
};

/// Paints display lists on a few threads of its own, the nearest first. Called from the main thread.
class PaintPool final {
public:
    /// `finished` is called from a worker when results wait for `takeResults`; once until they were taken.
    PaintPool(int threads, std::function<void()> finished);
    ~PaintPool();
    PaintPool(const PaintPool&) = delete;
    PaintPool& operator=(const PaintPool&) = delete;

    /// Takes the place of a job of the same surface and tile that has not begun; true when there was one.
    bool submit(PaintJob job);
    /// Tells the distances of the jobs that have not begun anew; a negative answer forgets the job.
    void updateDistances(const std::function<double(const PaintJob&)>& distance);
    std::vector<PaintResult> takeResults();
    /// Paints a visible job on the calling thread, else waits for a result of the workers until `end`. False when there
    /// is neither a visible job nor one under way, or the time is up.
    bool helpUntil(std::chrono::steady_clock::time_point end);
    bool isIdle() const;

private:
    void run();
    bool takeJob(PaintJob& job, double farthest);

    const std::function<void()> finished_;
    mutable std::mutex mutex_;  // guards all below
    std::condition_variable jobAdded_, resultAdded_;
    std::vector<PaintJob> jobs_;
    std::vector<PaintResult> results_;
    int underWay_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace ostrel
