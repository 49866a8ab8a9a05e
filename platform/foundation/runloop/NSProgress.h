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

/// One piece of work under way that a user may want to see: its title, how far it is, how long it still takes, and a way
/// to end it. Held by who does the work; while it is published, a host that looks on shows it. Any thread, but for what
/// says otherwise.
class NSProgress final : public std::enable_shared_from_this<NSProgress> {
public:
    /// Observers are told this often while something is published, in seconds; in between counting costs one store.
    static constexpr double updateInterval = 0.1;

    /// `totalUnitCount` in any unit (bytes, permille); 0 or less: how much there is to do is not known.
    static std::shared_ptr<NSProgress> progressWithTotalUnitCount(std::int64_t totalUnitCount);
    ~NSProgress();

    /// What is done, in the user's language: 'Uploading "clip.mp4"'. Set before it is published.
    const std::string& localizedDescription() const { return description_; }
    void setLocalizedDescription(std::string description) { description_ = std::move(description); }
    void setTotalUnitCount(std::int64_t count) { total_.store(count, std::memory_order_relaxed); }
    void setCompletedUnitCount(std::int64_t count) { completed_.store(count, std::memory_order_relaxed); }
    /// For work that is asked how far it is instead of telling so: 0 to 1, asked on the main thread while this is
    /// published. Set before it is published.
    void setFractionSource(std::function<double()> source) { fractionSource_ = std::move(source); }

    /// 0 to 1; absent when how much there is to do is not known.
    std::optional<double> fractionCompleted() const;
    /// Seconds, by the pace of the last while; absent until that is meaningful, and while nothing moves. Main thread.
    std::optional<double> estimatedTimeRemaining() const;

    /// Set before it is published; without one it cannot be cancelled.
    void setCancellationHandler(Task handler) { cancellation_ = std::move(handler); }
    bool isCancellable() const { return cancellation_ != nullptr; }
    /// Runs the handler, once, on the calling thread. The work ends soon, and unpublishes itself then.
    void cancel();
    bool isCancelled() const { return cancelled_.load(std::memory_order_relaxed); }

    /// Puts it in the list of work in progress, once; it leaves that by `unpublish`, or when nobody holds it any more.
    void publish();
    void unpublish();

    /// The work in progress, in the order it was published.
    static std::vector<std::shared_ptr<NSProgress>> published();
    /// `observer` only identifies the entry. Its handler is called at once, after every change of the list, and every
    /// `updateInterval` seconds while the list is not empty. Main thread.
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

    // Relaxed: each is a figure for show that orders nothing.
    std::atomic<std::int64_t> total_;
    std::atomic<std::int64_t> completed_{0};
    std::atomic<bool> cancelled_{false};
    std::string description_;
    std::function<double()> fractionSource_;
    Task cancellation_;
    std::deque<Sample> samples_;  // main thread: the way it came lately, oldest first
};

}  // namespace ostrel
