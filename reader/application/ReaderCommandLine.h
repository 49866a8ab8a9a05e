#pragma once

#include "reader/application/ReaderOptions.h"

#include <optional>

namespace CLI {
class App;
}

namespace ostrel {

/// Adds the options that every program with the reader's window has: --idiom, --language, --width, --height, --scale.
/// `options` receives the values while the command line is parsed, and must live until then.
void addWindowOptions(CLI::App& app, ReaderOptions& options);

/// Parses the command line with the options of `app`. Absent: the program continues. Otherwise the process ends with
/// this exit status: 0 after --help, 2 after a mistake, which standard error tells in one line.
std::optional<int> parseCommandLine(CLI::App& app, int argc, char** argv);

}  // namespace ostrel
