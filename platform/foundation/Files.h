#pragma once

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

}  // namespace ostrel
