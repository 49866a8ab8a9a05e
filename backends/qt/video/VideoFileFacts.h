#pragma once

#include "backends/qt/video/VideoConversion.h"

#include <string>

namespace ostrel {

/// How the frames of the video at `url` lie, as its container says: Qt's player does not tell it before 6.5. Reads the
/// header only; an upright video when that cannot be read within `seconds`. Any thread; blocks.
VideoOrientation videoOrientationOf(const std::string& url, double seconds);

}  // namespace ostrel
