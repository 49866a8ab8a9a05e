#pragma once

namespace ostrel {

/// Processor seconds of the calling thread.
double threadSeconds();
/// Processor seconds, user and system, of this process; or of its children that have ended.
double processSeconds();
double childrenSeconds();
/// Bytes of memory resident now, and the most that were since the last `forgetPeak`.
double residentBytes();
double peakBytes();
void forgetPeak();

}  // namespace ostrel
