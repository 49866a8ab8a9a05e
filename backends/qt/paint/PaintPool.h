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

/// One band of one surface to be painted.
struct PaintJob {
    std::uint64_t surface = 0;
    int band = 0;
    std::uint64_t version = 0;
    std::shared_ptr<const DisplayList> list;
    QRect pixels;
    /// Points from the viewport; 0: visible. The nearest job is painted first.
    double distance = 0;
};

struct PaintResult {
    std::uint64_t surface = 0;
    int band = 0;
    std::uint64_t version = 0;
    QImage picture;
};

/// Paints display lists on a few threads, the nearest first. Called from the main thread.
class PaintPool final {
public:
    /// `finished` is called on a painting thread when results wait for `takeResults`; only once until they are taken.
    PaintPool(int threads, std::function<void()> finished);
    ~PaintPool();
    PaintPool(const PaintPool&) = delete;
    PaintPool& operator=(const PaintPool&) = delete;

    /// Adds a job. The job replaces one of the same surface and band that has not begun; true when there was one.
    bool submit(PaintJob job);
    /// Asks `distance` for the new distance of each job that has not begun; a negative result removes the job.
    void updateDistances(const std::function<double(const PaintJob&)>& distance);
    std::vector<PaintResult> takeResults();
    /// Paints a visible job on the calling thread, or waits until `end` for a result of the painting threads. False
    /// when no visible job is left or under way, or when the time is up.
    bool helpUntil(std::chrono::steady_clock::time_point end);
    bool isIdle() const;

private:
    void run();
    bool takeJob(PaintJob& job, double farthest);

    const std::function<void()> finished_;
    // Guards the members below.
    mutable std::mutex mutex_;
    std::condition_variable jobAdded_, resultAdded_;
    std::vector<PaintJob> jobs_;
    std::vector<PaintResult> results_;
    int underWay_ = 0;
    bool stopping_ = false;
    std::vector<std::thread> threads_;
};

}  // namespace ostrel
