#pragma once

#include "platform/foundation/values/Data.h"
#include "serverframework/media/MediumFacts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The form of a file of the media cache: the bytes of the medium, then a trailer that says whose they are and by which
/// they can be checked. The bytes come first so that they can be written before their length is known. Until when they
/// are fresh is the file's modification time, which changes without the file being written.
struct MediumFile {
    Data body;
    std::string url;
    /// All but `freshUntil`.
    MediumFacts facts;
    std::uint64_t checksum = 0;

    /// None when the trailer is missing, damaged or of another version. The body is not checked.
    static std::optional<MediumFile> read(const Data& file);
    static std::uint64_t checksumOf(const Data& body);
    /// Of the first bytes of a file, read in pieces: a large mapping would become resident by being looked through.
    /// None when they cannot be read.
    static std::optional<std::uint64_t> checksumOf(int descriptor, std::size_t size);
    static std::string trailer(std::string_view url, const MediumFacts& facts, std::size_t bodySize,
                               std::uint64_t checksum);
    /// What the file of an address is called: 32 hexadecimal digits and an extension.
    static std::string nameFor(std::string_view url);
    static bool isName(std::string_view name);
};

}  // namespace ostrel
