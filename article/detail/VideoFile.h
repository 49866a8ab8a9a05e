#pragma once

#include "platform/foundation/values/Data.h"

#include <functional>
#include <string>

namespace ostrel {

/// The one file that a downloaded video is played from; every download replaces the one before. A player that has it
/// open goes on with the file it opened.
std::string currentVideoFile();

/// Writes `video` beside `currentVideoFile()` on a thread of its own, for it may be large. Then, on the main thread, it
/// takes that file's place and `done` runs in the same turn, with its path; empty when it could not be written. Nothing is
/// replaced and `done` does not run when `isWanted` says no by then.
void writeCurrentVideoFile(const Data& video, std::function<bool()> isWanted,
                           std::function<void(const std::string& path)> done);

/// The address of `path` as a player takes it: http and https addresses stand for themselves, an absolute path becomes a
/// "file" address (RFC 8089). Empty when it is neither.
std::string playerURL(const std::string& path);

}  // namespace ostrel
