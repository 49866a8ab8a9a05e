#pragma once

#include <string>

namespace ostrel {

/// The clip of a camera that was turned by 90 degrees, in "videos".
inline constexpr char turnedClipName[] = "Lantern.mov";

/// Makes the folders "pictures" and "videos" in `folder`, from which the tour picks: pictures of several shapes and
/// kinds, a damaged picture, copies of the clips of the sample articles, which are found below `serverFolder`, and the
/// turned clip. False when a file cannot be written.
bool makeTourMedia(const std::string& folder, const std::string& serverFolder);

}  // namespace ostrel
