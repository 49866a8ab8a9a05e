#pragma once

#include "tour/guide/TourOptions.h"

namespace ostrel {

/// Uses the reader's window by synthetic mouse, touch and key events, on a server and data of its own, and after every
/// step checks what the window and the database hold. Writes "NN-name.png" for each step and "tour.json" into
/// `options.folder`. The exit status: 0 when every check held, else 1. Main thread, once in a process.
int runTour(const TourOptions& options);

}  // namespace ostrel
