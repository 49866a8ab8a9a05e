#pragma once

#include "platform/foundation/runloop/RunLoop.h"

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// One piece of work in progress that a user may want to see: its title, the completed fraction, the
/// remaining time, and a way to cancel it. Owned by the code that does the work; while it is published,
/// observers can show it. Any thread, except where noted.
class NSProgress final : public std::enable_shared_from_this<NSProgress> {
public:
    /// Seconds between two calls of the observers while work is published. Counting between them costs one
    /// store.
    static constexpr double updateInterval = 0.1;

    /// `totalUnitCount` in any unit (bytes, permille); 0 or less: the amount of work is not known.
    static std::shared_ptr<NSProgress> progressWithTotalUnitCount(std::int64_t totalUnitCount);
    ~NSProgress();

    /// The title in the user's language: 'Uploading "clip.mp4"'. Set before the progress is published.
    const std::string& localizedDescription() const { return description_; }
    void setLocalizedDescription(std::string description) { description_ = std::move(description); }
    void setTotalUnitCount(std::int64_t count) { total_.store(count, std::memory_order_relaxed); }
    void setCompletedUnitCount(std::int64_t count) { completed_.store(count, std::memory_order_relaxed); }
    /// For work that does not count units: a function that returns the completed fraction, 0 to 1. Called on
    /// the main thread while this is published; set before.
    void setFractionSource(std::function<double()> source) { fractionSource_ = std::move(source); }

    /// 0 to 1; absent when the amount of work is not known.
    std::optional<double> fractionCompleted() const;
    /// Seconds, by the pace of the last 15 seconds; absent during the first 2 seconds and while the work
    /// makes no progress. Main thread.
    std::optional<double> estimatedTimeRemaining() const;

    /// Set before the progress is published. Work without a handler cannot be cancelled.
    void setCancellationHandler(Task handler) { cancellation_ = std::move(handler); }
    bool isCancellable() const { return cancellation_ != nullptr; }
    /// Runs the handler, only once, on the calling thread. The work ends soon after, and then unpublishes the
    /// progress.
    void cancel();
    bool isCancelled() const { return cancelled_.load(std::memory_order_relaxed); }

    /// Adds this to the list of work in progress, only once. `unpublish` and the release of the last owner
    /// remove it.
    void publish();
    void unpublish();

    /// The list of work in progress, in the order of publication.
    static std::vector<std::shared_ptr<NSProgress>> published();
    /// `observer` only identifies the entry. The handler is called at once, after every change of the list,
    /// and every `updateInterval` seconds while the list is not empty. Main thread.
    using Observer = std::function<void(const std::vector<std::shared_ptr<NSProgress>>&)>;
    static void addObserver(const void* observer, Observer handler);
    static void removeObserver(const void* observer);

    explicit NSProgress(std::int64_t totalUnitCount) : total_(totalUnitCount) {}

private:
    struct List;
    static List& list();
    struct Sample {
        double time, fraction;
    };
    void takeSample(double time);

    // Relaxed: these numbers are only displayed and order no other memory access.
    std::atomic<std::int64_t> total_;
    std::atomic<std::int64_t> completed_{0};
    std::atomic<bool> cancelled_{false};
    std::string description_;
    std::function<double()> fractionSource_;
    Task cancellation_;
    std::deque<Sample> samples_;  // main thread: the recent fractions with their times, oldest first
};

}  // namespace ostrel
