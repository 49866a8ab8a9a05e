#pragma once

#include "backends/qt/video/VideoConversion.h"

#include <string>

namespace ostrel {

/// The orientation of the frames of the video at `url`, from the container's header; Qt's player does not report it
/// before 6.5. Upright when the header cannot be read within `seconds`. Any thread; blocks.
VideoOrientation videoOrientationOf(const std::string& url, double seconds);

}  // namespace ostrel
