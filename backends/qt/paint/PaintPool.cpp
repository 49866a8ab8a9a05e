#include "backends/qt/paint/PaintPool.h"

#include "backends/qt/text/QtFonts.h"
#include "backends/qt/text/TextBlock.h"

#include <algorithm>
#include <limits>

namespace ostrel {

PaintPool::PaintPool(int threads, std::function<void()> finished) : finished_(std::move(finished)) {
    for (int i = 0; i < threads; ++i) threads_.emplace_back([this] { run(); });
}

PaintPool::~PaintPool() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        jobAdded_.notify_all();
    }
    for (std::thread& thread : threads_) thread.join();
}

bool PaintPool::submit(PaintJob job) {
    const std::lock_guard lock(mutex_);
    const auto same = std::find_if(jobs_.begin(), jobs_.end(), [&](const PaintJob& other) {
        return other.surface == job.surface && other.band == job.band;
    });
    if (same != jobs_.end()) {
        *same = std::move(job);
        return true;
    }
    jobs_.push_back(std::move(job));
    jobAdded_.notify_one();
    return false;
}

void PaintPool::updateDistances(const std::function<double(const PaintJob&)>& distance) {
    const std::lock_guard lock(mutex_);
    std::erase_if(jobs_, [&](PaintJob& job) {
        job.distance = distance(job);
        return job.distance < 0;
    });
}

std::vector<PaintResult> PaintPool::takeResults() {
    const std::lock_guard lock(mutex_);
    return std::exchange(results_, {});
}

bool PaintPool::helpUntil(std::chrono::steady_clock::time_point end) {
    PaintJob job;
    std::unique_lock lock(mutex_);
    if (std::chrono::steady_clock::now() >= end) return false;
    if (takeJob(job, 0)) {
        lock.unlock();
        QImage picture = paintDisplayList(*job.list, job.pixels);
        lock.lock();
        results_.push_back({job.surface, job.band, job.version, std::move(picture)});
        return true;
    }
    if (!results_.empty()) return true;
    if (underWay_ == 0) return false;
    return resultAdded_.wait_until(lock, end, [&] { return !results_.empty(); });
}

bool PaintPool::isIdle() const {
    const std::lock_guard lock(mutex_);
    return jobs_.empty() && underWay_ == 0 && results_.empty();
}

bool PaintPool::takeJob(PaintJob& job, double farthest) {
    const auto nearest = std::min_element(jobs_.begin(), jobs_.end(),
                                          [](const PaintJob& a, const PaintJob& b) { return a.distance < b.distance; });
    if (nearest == jobs_.end() || nearest->distance > farthest) return false;
    job = std::move(*nearest);
    jobs_.erase(nearest);
    return true;
}

void PaintPool::run() {
    // Each thread opens the fonts for itself; this does it before the first job, so that the first row does not wait.
    TextBlock::lineHeight(qtFont(UIFont::system(17)));
    std::unique_lock lock(mutex_);
    for (;;) {
        jobAdded_.wait(lock, [&] { return stopping_ || !jobs_.empty(); });
        if (stopping_) return;
        PaintJob job;
        if (!takeJob(job, std::numeric_limits<double>::infinity())) continue;
        ++underWay_;
        const bool isInSight = !(job.distance > 0);
        lock.unlock();
        QImage picture = paintDisplayList(*job.list, job.pixels);
        job.list.reset();
        lock.lock();
        --underWay_;
        results_.push_back({job.surface, job.band, job.version, std::move(picture)});
        resultAdded_.notify_all();
        // Pictures painted ahead are taken with the next frame, so one notification when all of them are done is
        // enough.
        if (isInSight || (jobs_.empty() && underWay_ == 0)) {
            lock.unlock();
            finished_();
            lock.lock();
        }
    }
}

}  // namespace ostrel
