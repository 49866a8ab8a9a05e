#pragma once

#include <string>

namespace ostrel {

/// Makes "pictures" and "videos" in `folder`, for the pickers of a tour: a few pictures of several shapes and kinds, one
/// that is damaged, and the short clips that the sample articles come with, found below `serverFolder`. False when a file
/// cannot be written.
bool makeTourMedia(const std::string& folder, const std::string& serverFolder);

}  // namespace ostrel
