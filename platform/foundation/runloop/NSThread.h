#pragma once

#include "platform/foundation/runloop/RunLoop.h"

namespace ostrel {

/// Detached threads, for work that blocks. Every detached thread is counted, so that a process (or a test)
/// can wait until all of them have ended.
class NSThread final {
public:
    /// Runs `body` on a new thread. An exception that escapes `body` ends the process. While the system
    /// cannot create a thread, the main run loop retries; without a main run loop, `body` runs at once on the
    /// calling thread.
    static void detachNewThread(Task body);
    static bool isMainThread() { return RunLoop::main().isMainThread(); }
    /// Sleeps by the installed clock. Not for the main thread.
    static void sleepForTimeInterval(double seconds);
    /// The number of detached threads that run or are about to start.
    static int runningCount();
    /// Blocks until no detached thread runs, for at most `seconds` of real time, whatever clock is installed.
    /// True when none runs.
    static bool waitForAll(double seconds);
};

}  // namespace ostrel
