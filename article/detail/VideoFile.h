#pragma once

#include "platform/foundation/values/Data.h"

#include <functional>
#include <string>

namespace ostrel {

/// The path of the one file from which downloaded videos play. Every download replaces the file; a player
/// that has opened the former file keeps playing the former file.
std::string currentVideoFile();

/// Writes `video`, which may be large, to a file beside `currentVideoFile()` on a thread of its own. The main
/// thread then asks `isWanted`. If it says yes, the new file replaces `currentVideoFile()` and `done` gets
/// the path in the same turn of the run loop, so that no row plays another row's video; the path is empty
/// when the file could not be written. If it says no, nothing is replaced and `done` does not run.
void writeCurrentVideoFile(const Data& video, std::function<bool()> isWanted,
                           std::function<void(const std::string& path)> done);

/// The address at which a player finds `path`: an http or https address is returned as it is, an absolute
/// path becomes a "file" address (RFC 8089), everything else gives an empty text.
std::string playerURL(const std::string& path);

}  // namespace ostrel
