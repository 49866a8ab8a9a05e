#pragma once

#include "platform/uikit/view/UIDevice.h"

#include <optional>
#include <string>

namespace ostrel {

/// What the command line of `ostrel-reader` asks for.
struct ReaderOptions {
    UIUserInterfaceIdiom idiom = UIUserInterfaceIdiom::phone;
    std::string idiomName = "phone";
    std::string server;  ///< base address of a server elsewhere; empty: start one
    /// What the module takes for the user's home: it writes converted clips and unreadable answers into "Documents" there.
    std::string homeFolder;
    std::string dataFolder;  ///< empty: the user's own folder for application data
    std::string tourFolder;  ///< not empty: run the tour and write its pictures there
    std::string language;    ///< BCP 47 tag; empty: the system's
    /// Folders of the user's pictures and clips; empty: the system's.
    std::string picturesFolder, videosFolder;
    int width = 0, height = 0;  ///< points; 0: by idiom
    double scale = 0;           ///< device pixels per point; 0: the screen's
};

/// The options, or, when the process is to end now, its exit status: after `--help` (0) and after a mistake (2), each
/// of which has printed its text.
struct ReaderCommandLine {
    std::optional<ReaderOptions> options;
    int exitStatus = 0;
};
ReaderCommandLine parseReaderCommandLine(int argc, char** argv);

}  // namespace ostrel
