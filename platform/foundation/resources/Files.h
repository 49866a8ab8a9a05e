#pragma once

#include "platform/foundation/values/Data.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ostrel {

/// The user's home directory (the environment's HOME, else the password database); tests set another one.
std::string NSHomeDirectory();
void setHomeDirectory(std::string path);

/// Writes `text` to `path` through a temporary file in the same folder and a rename, so that a reader sees
/// the old content or the whole new one. Creates the parent folder. False, and nothing changed, when that
/// fails.
bool writeFileAtomically(const std::string& path, std::string_view text);

/// The bytes of a regular file, read into memory; what happens to the file later changes nothing. Null data with a
/// sentence in `error`, when given, for a file that cannot be read or is larger than `limit` bytes. Any thread; blocks.
Data readFile(const std::string& path, std::size_t limit, std::string* error = nullptr);

/// The same without taking memory: the bytes are copied to a file without a name in the temporary folder, which goes with
/// the data (its `filePath` leads nowhere).
Data snapshotOfFile(const std::string& path, std::size_t limit, std::string* error = nullptr);

}  // namespace ostrel
