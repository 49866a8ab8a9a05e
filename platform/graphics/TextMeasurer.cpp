#include "platform/graphics/TextMeasurer.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace ostrel {

namespace {

std::shared_ptr<TextMeasurer>& installed() {
    static std::shared_ptr<TextMeasurer> measurer;
    return measurer;
}

}  // namespace

TextMeasurer& TextMeasurer::shared() {
    if (!installed()) {
        std::fputs("No text measurer is installed; a backend does that before the first window is made.\n", stderr);
        std::abort();
    }
    return *installed();
}

void TextMeasurer::install(std::shared_ptr<TextMeasurer> measurer) { installed() = std::move(measurer); }

}  // namespace ostrel
