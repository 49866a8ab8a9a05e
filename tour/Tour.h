#pragma once

#include "reader/ReaderOptions.h"

namespace ostrel {

/// Uses the real window by synthetic mouse, touch and key events, on a server and data of its own; after every step
/// checks what the window and the database hold. Writes "NN-name.png" for each step and "tour.json" into
/// `options.tourFolder`. The exit status: 0 when every step held, 1 otherwise.
int runTour(const ReaderOptions& options);

}  // namespace ostrel
