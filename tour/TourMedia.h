#pragma once

#include <string>

namespace ostrel {

/// Makes "pictures" and "videos" in `folder`, for the pickers of a tour: a few pictures of several shapes and kinds, one
/// that is damaged, the short clips that the sample articles come with, found below `serverFolder`, and one that a camera
/// turned by 90 degrees would have written. False when a file cannot be written.
inline constexpr char turnedClipName[] = "Lantern.mov";
bool makeTourMedia(const std::string& folder, const std::string& serverFolder);

}  // namespace ostrel
