#pragma once

#include "reader/application/ReaderOptions.h"

#include <string>

namespace ostrel {

/// What the command line of `ostrel-tour` asks for.
struct TourOptions {
    /// How the reader's window is opened. The folders in it are the tour's own.
    ReaderOptions reader;
    /// The folder of the pictures and of tour.json.
    std::string folder;
};

}  // namespace ostrel
