#pragma once

#include "article/media/NSArticleVideoObject.h"
#include "platform/media/AVAsset.h"

#include <memory>
#include <string>

namespace ostrel {

/// What ostrel-convert prints about a converted clip: one line for each fact, or all facts as one JSON object.
struct ClipReport {
    /// Whole seconds.
    int duration = 0;
    /// Pixels of the upright picture.
    int width = 0, height = 0;
    /// The name of the preset: "medium" or "low".
    std::string preset;
    /// The clips before and after the conversion; null when a clip cannot be opened.
    std::shared_ptr<const AVAsset> source, result;

    /// Prints the facts on stdout. `item` has the date, the place and the device of the source.
    void print(const NSArticleVideoObject& item, bool json) const;
    /// Prints the reason of a failure on stderr, with `json` also as an object on stdout.
    static void printError(const std::string& why, bool json);
};

}  // namespace ostrel
