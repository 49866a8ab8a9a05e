#pragma once

#include <string_view>

namespace ostrel {

/// Short clips with sound, made by clips/make-clips from formulas.
enum class SampleClip {
    Sea,      ///< landscape
    Lantern,  ///< portrait
    Wheel,    ///< square
    Rain,     ///< portrait by a rotation matrix: its frames are coded lying on their side
};

/// The files of a clip, part of the program, and the facts of its record. Sizes are as shown, in pixels.
struct SampleClipFiles {
    std::string_view video;  ///< MP4: H.264 and AAC
    std::string_view still;  ///< JPEG of the first frame
    int width;
    int height;
    double duration;  ///< seconds
};

SampleClipFiles filesOf(SampleClip clip);

}  // namespace ostrel
