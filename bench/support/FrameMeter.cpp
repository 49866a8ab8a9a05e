#include "bench/support/FrameMeter.h"

#include "bench/support/ProcessMeter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickWindow>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <thread>

namespace ostrel {

namespace {

constexpr auto refresh = std::chrono::microseconds(16667);

}  // namespace

FrameMeter::FrameMeter(QQuickWindow& window) : window_(window) { window_.installEventFilter(this); }

bool FrameMeter::eventFilter(QObject* object, QEvent* event) {
    if (object != &window_ || event->type() != QEvent::UpdateRequest || inFrame_) return false;
    const double processor = threadSeconds();
    const auto begin = Clock::now();
    inFrame_ = true;
    QCoreApplication::sendEvent(object, event);
    inFrame_ = false;
    frameWall_ += std::chrono::duration<double>(Clock::now() - begin).count();
    frameProcessor_ += threadSeconds() - processor;
    ++shown_;
    return true;
}

void FrameMeter::waitUntil(Clock::time_point next, bool forFrame) {
    QTimer wake;
    wake.setSingleShot(true);
    wake.setTimerType(Qt::PreciseTimer);
    // Waits longer than one frame takes only when the frame has not been shown yet.
    const auto latest = next + 10 * refresh;
    for (auto now = Clock::now(); now < next || (forFrame && shown_ == 0 && now < latest); now = Clock::now()) {
        wake.start(std::chrono::ceil<std::chrono::milliseconds>(
            std::max<std::chrono::nanoseconds>(next - now, std::chrono::milliseconds(1))));
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

double FrameMeter::costOfWaiting() {
    std::vector<double> costs;
    for (int i = 0; i < 30; ++i) {
        const double before = threadSeconds();
        waitUntil(Clock::now() + refresh, false);
        costs.push_back(threadSeconds() - before);
    }
    return median(std::move(costs));
}

std::vector<double> FrameMeter::frames(int count, int warmUp, const std::function<void(int)>& change) {
    std::vector<double> seconds;
    seconds.reserve(static_cast<std::size_t>(count));
    const double waiting = costOfWaiting();
    Clock::time_point next = Clock::now();
    for (int frame = 0; frame < warmUp + count; ++frame) {
        next = std::max(next, Clock::now() - refresh) + refresh;
        frameWall_ = frameProcessor_ = 0;
        shown_ = 0;
        const double before = threadSeconds();
        change(frame);
        waitUntil(next, true);
        const double around = threadSeconds() - before - frameProcessor_ - waiting;
        if (frame >= warmUp && shown_ > 0) seconds.push_back(frameWall_ + std::max(around, 0.0));
    }
    return seconds;
}

bool FrameMeter::waitFor(const std::function<bool()>& condition, double seconds) {
    QElapsedTimer since;
    since.start();
    while (!condition()) {
        if (static_cast<double>(since.elapsed()) > seconds * 1000) return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QThread::usleep(500);
    }
    return true;
}

double FrameMeter::median(std::vector<double> values) {
    if (values.empty()) return -1;
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

}  // namespace ostrel
