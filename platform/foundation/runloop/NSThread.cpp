#include "platform/foundation/runloop/NSThread.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/NSLog.h"

#include <cassert>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

namespace ostrel {

namespace {

constexpr double secondsBetweenAttempts = 0.1;

struct Threads {
    std::mutex mutex;  // guards running
    std::condition_variable changed;
    int running = 0;
};

Threads& threads() {
    // Never destroyed, because a thread may end while the process does.
    static Threads& threads = *new Threads;
    return threads;
}

void count(int change) {
    Threads& all = threads();
    const std::lock_guard lock(all.mutex);
    all.running += change;
    // Notified under the lock, because the waiting thread may end the process right after it.
    all.changed.notify_all();
}

/// Thread-local: its destructor takes the thread out of the count, after all other thread-local objects have
/// gone.
struct Counted {
    ~Counted() { count(-1); }
};

void start(std::shared_ptr<Task> body) {
    try {
        std::thread([body]() mutable {
            thread_local Counted counted;
            (*body)();
            body.reset();
        }).detach();
    } catch (const std::system_error& error) {
        NSLog("A thread could not be started: %@", error.what());
        if (RunLoop::hasMain()) {
            RunLoop::main().performAfter(secondsBetweenAttempts, [body = std::move(body)] { start(body); });
        } else {
            (*body)();
            body.reset();
            count(-1);
        }
    }
}

}  // namespace

void NSThread::detachNewThread(Task body) {
    assert(body);
    count(1);
    start(std::make_shared<Task>(std::move(body)));
}

void NSThread::sleepForTimeInterval(double seconds) {
    assert(!RunLoop::hasMain() || !isMainThread());
    Clock::shared().sleep(seconds);
}

int NSThread::runningCount() {
    Threads& all = threads();
    const std::lock_guard lock(all.mutex);
    return all.running;
}

bool NSThread::waitForAll(double seconds) {
    Threads& all = threads();
    std::unique_lock lock(all.mutex);
    return all.changed.wait_for(lock, std::chrono::duration<double>(seconds), [&] { return all.running == 0; });
}

}  // namespace ostrel
