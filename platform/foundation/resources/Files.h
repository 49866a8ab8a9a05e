#pragma once

#include "platform/foundation/values/Data.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ostrel {

/// The user's home directory: the environment's HOME, else that of the password database. Tests set another
/// one.
std::string NSHomeDirectory();
void setHomeDirectory(std::string path);

/// Writes `text` to `path` through a temporary file in the same folder and a rename, so that a reader sees
/// either the old content or the whole new one. Creates the parent folder. False when writing fails; the file
/// is then unchanged.
bool writeFileAtomically(const std::string& path, std::string_view text);

/// Reads a regular file into memory, so that later changes of the file do not matter. Null data with a
/// sentence in `error`, when given, for a file that cannot be read or is larger than `limit` bytes. Any
/// thread; blocks.
Data readFile(const std::string& path, std::size_t limit, std::string* error = nullptr);

/// Like `readFile`, but copies the bytes to a nameless file in the temporary folder instead of memory. The
/// copy lives as long as the data, whose `filePath` cannot be opened.
Data snapshotOfFile(const std::string& path, std::size_t limit, std::string* error = nullptr);

}  // namespace ostrel
