#pragma once

#include <functional>
#include <vector>

class QQuickWindow;

namespace ostrel {

/// Measures whole frames of a window on the basic render loop, paced as a display of 60 Hz would.
/// A frame is what the main thread does for it: `change`, polishing, synchronising, rendering and showing (wall time),
/// and the processor time of its event loop until the next frame.
class FrameMeter final {
public:
    explicit FrameMeter(QQuickWindow& window) : window_(window) {}
    /// Seconds of each of `count` frames, after `warmUp` that do not count.
    std::vector<double> frames(int count, int warmUp, const std::function<void(int frame)>& change);
    /// Runs the event loop until `condition` holds, at most `seconds`.
    static bool waitFor(const std::function<bool()>& condition, double seconds);
    static double median(std::vector<double> values);

private:
    QQuickWindow& window_;
};

}  // namespace ostrel
