#include "backends/qt/system/QtRunLoop.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <limits>
#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEvent>
#include <QThread>

namespace ostrel {

namespace {

const auto wakeEvent = static_cast<QEvent::Type>(QEvent::registerEventType());
const auto endOfTurnEvent = static_cast<QEvent::Type>(QEvent::registerEventType());

TaskQueue::Nanoseconds now() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::nanoseconds(1);
}

}  // namespace

QtRunLoop::QtRunLoop() {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &QtRunLoop::runTurn);
    if (auto* dispatcher = QAbstractEventDispatcher::instance()) {
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] {
            if (endPosted_) tasks_.runTurn(std::numeric_limits<TaskQueue::Nanoseconds>::min());
        });
    }
}

void QtRunLoop::perform(Task task) {
    tasks_.add(now(), std::move(task));
    wake();
}

std::uint64_t QtRunLoop::performAfter(double seconds, Task task) {
    const std::uint64_t id = tasks_.add(now() + TaskQueue::nanoseconds(seconds), std::move(task));
    wake();
    return id;
}

void QtRunLoop::atEndOfTurn(Task task) {
    assert(isMainThread());
    tasks_.addAtEndOfTurn(std::move(task));
    if (std::exchange(endPosted_, true)) return;
    // Qt's dispatcher signals `aboutToBlock` only when no posted event is left, which may be late.
    QCoreApplication::postEvent(this, new QEvent(endOfTurnEvent), Qt::LowEventPriority);
}

bool QtRunLoop::isMainThread() const { return QThread::currentThread() == thread(); }

bool QtRunLoop::event(QEvent* event) {
    if (event->type() == wakeEvent) {
        awake_ = false;
        runTurn();
        return true;
    }
    if (event->type() == endOfTurnEvent) {
        endPosted_ = false;
        tasks_.runTurn(std::numeric_limits<TaskQueue::Nanoseconds>::min());
        return true;
    }
    return QObject::event(event);
}

void QtRunLoop::wake() {
    if (!awake_.exchange(true)) QCoreApplication::postEvent(this, new QEvent(wakeEvent));
}

void QtRunLoop::runTurn() {
    tasks_.runTurn(now());
    arm();
}

void QtRunLoop::arm() {
    const auto due = tasks_.nextDue();
    if (!due) {
        timer_.stop();
        return;
    }
    constexpr std::int64_t longest = 24 * 3600 * 1000;
    const std::int64_t wait = *due <= now() ? 0 : (*due - now() + 999'999) / 1'000'000;
    if (wait == 0) {
        wake();
    } else {
        timer_.start(static_cast<int>(std::clamp<std::int64_t>(wait, 0, longest)));
    }
}

}  // namespace ostrel
