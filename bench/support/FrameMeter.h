#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <vector>

class QQuickWindow;

namespace ostrel {

/// Measures whole frames of a window on the basic render loop, paced as a display of 60 Hz would.
/// A frame is what the main thread does for it: polishing, synchronising, rendering and showing (wall time, for a
/// software rasteriser has threads of its own), and the processor time of `change` and of the event loop around it, without that of waiting.
class FrameMeter final : public QObject {
public:
    explicit FrameMeter(QQuickWindow& window);
    /// Seconds of each of `count` frames, after `warmUp` that do not count.
    std::vector<double> frames(int count, int warmUp, const std::function<void(int frame)>& change);
    /// Runs the event loop until `condition` holds, at most `seconds`.
    static bool waitFor(const std::function<bool()>& condition, double seconds);
    static double median(std::vector<double> values);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    using Clock = std::chrono::steady_clock;
    void waitUntil(Clock::time_point next, bool forFrame);
    /// Processor seconds of one frame's time in which nothing happens.
    double costOfWaiting();

    QQuickWindow& window_;
    bool inFrame_ = false;
    int shown_ = 0;
    double frameWall_ = 0, frameProcessor_ = 0;  // seconds, of the frames since they were last set to 0
};

}  // namespace ostrel
