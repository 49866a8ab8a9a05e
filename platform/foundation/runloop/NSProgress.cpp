#include "platform/foundation/runloop/NSProgress.h"

#include "platform/foundation/runloop/Clock.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

// Seconds over which the pace is measured, so that it follows a network that becomes slower.
constexpr double paceWindow = 15;
constexpr double sampleDistance = 0.5;
// Seconds of work without an estimate: the start of the work is no sign of its pace.
constexpr double leastSpan = 2;
constexpr double leastAdvance = 0.005;
// Seconds; a longer estimate is too uncertain to be shown.
constexpr double longestEstimate = 24 * 3600;

}  // namespace

/// The published progresses and their observers. Never destroyed, because work may end while the process
/// does.
struct NSProgress::List {
    std::mutex mutex;  // guards all members below except `observers`
    /// Entries are found by address: a shared pointer made under the mutex could be the last one, and its
    /// release would need the mutex again.
    struct Published {
        const NSProgress* address;
        std::weak_ptr<NSProgress> progress;
    };
    std::vector<Published> published;
    bool isTicking = false;
    bool isObserved = false;
    bool hasChanged = false;
    std::uint64_t generation = 0;  ///< a tick of an earlier generation stops: its run loop may have been replaced

    struct Entry {
        const void* observer;
        Observer handler;
        bool removed = false;
    };
    std::vector<std::shared_ptr<Entry>> observers;  // main thread

    /// Called with the mutex held.
    void start() {
        if (!isObserved || isTicking || !RunLoop::hasMain()) return;
        isTicking = true;
        RunLoop::main().perform([generation = generation] { list().tick(generation); });
    }

    std::vector<std::shared_ptr<NSProgress>> present() {
        std::vector<std::shared_ptr<NSProgress>> found;
        const std::lock_guard lock(mutex);
        for (const auto& entry : published) {
            if (auto progress = entry.progress.lock()) found.push_back(std::move(progress));
        }
        return found;
    }

    void tick(std::uint64_t ofGeneration) {
        bool changed = false;
        {
            const std::lock_guard lock(mutex);
            if (generation != ofGeneration) return;
            changed = std::exchange(hasChanged, false);
        }
        const auto work = present();
        for (const auto& progress : work) progress->takeSample(Clock::shared().monotonicSeconds());
        if (changed || !work.empty()) {
            for (const auto& entry : std::vector(observers)) {
                if (!entry->removed) entry->handler(work);
            }
        }
        const std::lock_guard lock(mutex);
        if (generation != ofGeneration) return;
        isTicking = isObserved && (!published.empty() || hasChanged);
        if (isTicking) RunLoop::main().performAfter(updateInterval, [ofGeneration] { list().tick(ofGeneration); });
    }
};

NSProgress::List& NSProgress::list() {
    static List& list = *new List;
    return list;
}

std::shared_ptr<NSProgress> NSProgress::progressWithTotalUnitCount(std::int64_t totalUnitCount) {
    return std::make_shared<NSProgress>(totalUnitCount);
}

NSProgress::~NSProgress() { unpublish(); }

std::optional<double> NSProgress::fractionCompleted() const {
    if (fractionSource_) return std::clamp(fractionSource_(), 0.0, 1.0);
    const auto total = total_.load(std::memory_order_relaxed);
    if (total <= 0) return std::nullopt;
    const auto completed = completed_.load(std::memory_order_relaxed);
    return std::clamp(static_cast<double>(completed) / static_cast<double>(total), 0.0, 1.0);
}

void NSProgress::takeSample(double time) {
    const auto fraction = fractionCompleted();
    if (!fraction) return samples_.clear();
    // Work that starts over, such as an upload that is sent again.
    if (!samples_.empty() && *fraction < samples_.back().fraction) samples_.clear();
    if (!samples_.empty() && time - samples_.back().time < sampleDistance) return;
    samples_.push_back({time, *fraction});
    while (samples_.size() > 2 && time - samples_.front().time > paceWindow) samples_.pop_front();
}

std::optional<double> NSProgress::estimatedTimeRemaining() const {
    if (samples_.size() < 2) return std::nullopt;
    const Sample& first = samples_.front();
    const Sample& last = samples_.back();
    const double span = last.time - first.time, advance = last.fraction - first.fraction;
    if (span < leastSpan || advance < leastAdvance) return std::nullopt;
    const double since = Clock::shared().monotonicSeconds() - last.time;
    const double seconds = std::max(0.0, (1 - last.fraction) * span / advance - since);
    return seconds > longestEstimate ? std::nullopt : std::optional(seconds);
}

void NSProgress::cancel() {
    if (!cancellation_ || cancelled_.exchange(true, std::memory_order_relaxed)) return;
    cancellation_();
}

void NSProgress::publish() {
    List& all = list();
    const std::lock_guard lock(all.mutex);
    if (std::ranges::find(all.published, this, &List::Published::address) != all.published.end()) return;
    all.published.push_back({this, weak_from_this()});
    all.hasChanged = true;
    all.start();
}

void NSProgress::unpublish() {
    List& all = list();
    const std::lock_guard lock(all.mutex);
    if (std::erase_if(all.published, [this](const auto& entry) { return entry.address == this; }) == 0) return;
    all.hasChanged = true;
    all.start();
}

std::vector<std::shared_ptr<NSProgress>> NSProgress::published() { return list().present(); }

void NSProgress::addObserver(const void* observer, Observer handler) {
    List& all = list();
    const auto entry = std::make_shared<List::Entry>(List::Entry{observer, std::move(handler)});
    all.observers.push_back(entry);
    {
        const std::lock_guard lock(all.mutex);
        if (!all.isObserved) {
            // The ticks of former observers may have been lost with their run loop.
            ++all.generation;
            all.isTicking = false;
        }
        all.isObserved = true;
        if (!all.published.empty()) all.start();
    }
    entry->handler(all.present());
}

void NSProgress::removeObserver(const void* observer) {
    List& all = list();
    for (const auto& entry : all.observers) entry->removed |= entry->observer == observer;
    std::erase_if(all.observers, [](const auto& entry) { return entry->removed; });
    const std::lock_guard lock(all.mutex);
    all.isObserved = !all.observers.empty();
}

}  // namespace ostrel
