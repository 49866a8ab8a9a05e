#pragma once

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/runloop/TaskQueue.h"

#include <atomic>
#include <QObject>
#include <QTimer>

namespace ostrel {

/// The main run loop on Qt's event loop. Tasks of other threads arrive as one posted event, however many they are; the
/// tasks for the end of a turn run before the loop waits, and after each batch of tasks. Made on the main thread.
class QtRunLoop final : public QObject, public RunLoop {
public:
    QtRunLoop();

    void perform(Task task) override;
    std::uint64_t performAfter(double seconds, Task task) override;
    void cancel(std::uint64_t id) override { tasks_.cancel(id); }
    void atEndOfTurn(Task task) override;
    bool isMainThread() const override;

    bool event(QEvent* event) override;

private:
    void wake();
    void runTurn();
    void arm();

    TaskQueue tasks_;
    QTimer timer_;
    // A wake event is posted. The flag orders no other memory: the queue has its own lock.
    std::atomic<bool> awake_{false};
    bool endPosted_ = false;
};

}  // namespace ostrel
