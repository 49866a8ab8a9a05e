#pragma once

#include "platform/graphics/UIFont.h"

#include <QFont>

namespace ostrel {

/// The system's font for `font`, `scale` times as large: the family of that name where it is installed, else Noto Sans
/// CJK SC in the same weight, else the system's own. Sizes are exact in pixels at a device pixel ratio of 1; glyphs are
/// not hinted, so that a text is as wide as it measures at every ratio. Any thread, once `prepareFonts` has run.
QFont qtFont(const UIFont& font, double scale = 1);

/// The font of the bullets that hide a password. Bullets of ideographic fonts are specks as wide as an ideograph.
inline UIFont bulletFont(UIFont font) {
    font.name = "Courier";
    return font;
}

/// Looks up the installed families; main thread, after the application object was made.
void prepareFonts();

}  // namespace ostrel
