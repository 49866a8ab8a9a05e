#pragma once

#include "platform/uikit/view/UIDevice.h"

#include <string>

namespace ostrel {

/// How a program opens the reader: filled in from its command line, then read by ReaderApplication.
struct ReaderOptions {
    UIUserInterfaceIdiom idiom = UIUserInterfaceIdiom::phone;
    std::string idiomName = "phone";
    /// BCP 47 tag; empty: the system's language.
    std::string language;
    /// The folder that the module takes for the user's home: it writes converted clips and unreadable answers into
    /// "Documents" there.
    std::string homeFolder;
    /// Folders of the user's pictures and clips; empty: the system's folders.
    std::string picturesFolder, videosFolder;
    /// Size of the window in points; 0: the size that fits the idiom.
    int width = 0, height = 0;
    /// Device pixels per point; 0: the screen's.
    double scale = 0;
};

}  // namespace ostrel
