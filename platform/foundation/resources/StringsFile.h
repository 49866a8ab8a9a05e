#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace ostrel::detail {

struct StringsFile {
    /// Of equal keys the last counts.
    std::map<std::string, std::string, std::less<>> texts;
    /// What ended the reading before the end of the file, as a sentence that names the line; empty when
    /// nothing did.
    std::string error;
};

/// Reads a string table in the old style of property lists, in UTF-8 with or without a byte order mark:
/// entries
/// `"key" = "value";` with the escapes \" \\ \' \n \r \t and \UXXXX (UTF-16), // and /* */ comments between
/// them. The entries before a fault are kept.
StringsFile parseStringsFile(std::string_view file);

}  // namespace ostrel::detail
