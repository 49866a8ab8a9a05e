#include "platform/graphics/TextMeasurer.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace ostrel {

namespace {

std::shared_ptr<TextMeasurer>& installedMeasurer() {
    static std::shared_ptr<TextMeasurer> measurer;
    return measurer;
}

}  // namespace

TextMeasurer& TextMeasurer::shared() {
    if (!installedMeasurer()) {
        std::fputs("No text measurer is installed; a backend does that before the first window is made.\n", stderr);
        std::abort();
    }
    return *installedMeasurer();
}

void TextMeasurer::install(std::shared_ptr<TextMeasurer> measurer) { installedMeasurer() = std::move(measurer); }

}  // namespace ostrel
