#include "bench/FrameMeter.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QQuickWindow>
#include <QThread>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <thread>

namespace ostrel {

namespace {

constexpr auto refresh = std::chrono::microseconds(16667);

double threadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

}  // namespace

std::vector<double> FrameMeter::frames(int count, int warmUp, const std::function<void(int)>& change) {
    std::vector<double> seconds;
    seconds.reserve(static_cast<std::size_t>(count));
    auto next = std::chrono::steady_clock::now();
    for (int frame = 0; frame < warmUp + count; ++frame) {
        const auto begin = std::chrono::steady_clock::now();
        change(frame);
        QEvent update(QEvent::UpdateRequest);
        QCoreApplication::sendEvent(&window_, &update);
        const double shown = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        const double before = threadSeconds();
        QCoreApplication::processEvents();
        next += refresh;
        std::this_thread::sleep_until(next);
        QCoreApplication::processEvents();
        const double between = threadSeconds() - before;
        if (frame >= warmUp) seconds.push_back(shown + between);
        next = std::max(next, std::chrono::steady_clock::now() - refresh);
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
