#pragma once

#include "platform/foundation/runloop/RunLoop.h"

namespace ostrel {

/// Threads of their own for work that waits. Every detached thread is counted, and a process (or a test) can
/// wait until all have ended.
class NSThread final {
public:
    /// Runs `body` on a new thread. An exception that escapes `body` ends the process. While the system has
    /// no thread to give, the start is tried again from the main run loop; without one, `body` runs at once
    /// on the calling thread.
    static void detachNewThread(Task body);
    static bool isMainThread() { return RunLoop::main().isMainThread(); }
    /// Sleeps by the installed clock. Not on the main thread.
    static void sleepForTimeInterval(double seconds);
    /// Detached threads still running, or about to.
    static int runningCount();
    /// Waits until no detached thread runs, at most `seconds`. True when none does.
    /// Measured in real time, whatever clock is installed.
    static bool waitForAll(double seconds);
};

}  // namespace ostrel
