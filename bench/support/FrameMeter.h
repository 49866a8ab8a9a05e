#pragma once

#include <QObject>

#include <chrono>
#include <functional>
#include <vector>

class QQuickWindow;

namespace ostrel {

/// Measures whole frames of a window on Qt's basic render loop, at the pace of a display of 60 Hz. The time of a frame
/// has two parts: the wall time in which the main thread polishes, synchronises, renders and shows the frame (wall
/// time, because a software rasteriser has threads of its own), and the processor time of `change` and of the event
/// loop around it, less the processor time of waiting.
class FrameMeter final : public QObject {
public:
    explicit FrameMeter(QQuickWindow& window);
    /// Calls `change` before each frame. The seconds of each of `count` frames, after `warmUp` frames that do not
    /// count.
    std::vector<double> frames(int count, int warmUp, const std::function<void(int frame)>& change);
    /// Runs the event loop until `condition` holds; false when it did not hold within `seconds`.
    static bool waitFor(const std::function<bool()>& condition, double seconds);
    static double median(std::vector<double> values);

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    using Clock = std::chrono::steady_clock;
    void waitUntil(Clock::time_point next, bool forFrame);
    /// The processor seconds that the event loop takes to wait for one frame.
    double costOfWaiting();

    QQuickWindow& window_;
    bool inFrame_ = false;
    int shown_ = 0;
    /// Seconds of the frames since both were last set to 0.
    double frameWall_ = 0, frameProcessor_ = 0;
};

}  // namespace ostrel
