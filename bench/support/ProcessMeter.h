#pragma once

namespace ostrel {

/// Processor seconds of the calling thread.
double threadSeconds();
/// Processor seconds, user and system, of this process.
double processSeconds();
/// Processor seconds, user and system, of the children of this process that have ended.
double childrenSeconds();
/// The bytes of memory that are resident now.
double residentBytes();
/// The most bytes that were resident at any moment since the last `forgetPeak`.
double peakBytes();
void forgetPeak();

}  // namespace ostrel
