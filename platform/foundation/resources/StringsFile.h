#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace ostrel::detail {

struct StringsFile {
    /// Of equal keys the last one wins.
    std::map<std::string, std::string, std::less<>> texts;
    /// The first syntax error, as a sentence that names its line; empty when the whole file was read.
    std::string error;
};

/// Reads a string table in the old style of property lists, in UTF-8 with or without a byte order mark:
/// entries `"key" = "value";` with the escapes \" \\ \' \n \r \t and \UXXXX (UTF-16), and // or /* */
/// comments between them. The entries before a syntax error are kept.
StringsFile parseStringsFile(std::string_view file);

}  // namespace ostrel::detail
