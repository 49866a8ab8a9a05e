#pragma once

#include "reader/application/ReaderOptions.h"

#include <string>

namespace ostrel {

// What a program sets up around the module before its first screen. Each part shows an embedder one thing that the
// module takes for granted. Main thread.

/// Tells Qt the scale of the screen, and to draw in software where there is no display and so no GPU. Called before the
/// program makes its QApplication, because Qt reads these values only then.
void setQtEnvironment(const ReaderOptions& options);

/// Tells the module where its resource bundles are. False with a sentence in `error` when they are missing.
bool installResources(std::string* error);

/// Makes `folder` the home of the module and removes the converted clips of former days from its "Documents". False
/// with a sentence in `error` when the folder cannot be made.
bool prepareHome(const std::string& folder, std::string* error);

/// Installs what inspects and converts clips, and the folders from which users pick pictures and clips.
void installMedia(const ReaderOptions& options);

}  // namespace ostrel
