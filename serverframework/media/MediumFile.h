#pragma once

#include "platform/foundation/values/Data.h"
#include "serverframework/media/MediumFacts.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A file of the media cache: the bytes of the medium, then a trailer with the medium's address, facts and checksum.
/// The bytes come first, so that they can be written before their length is known. The file's modification time says
/// until when the medium is fresh, because it can be changed without writing to the file.
struct MediumFile {
    Data body;
    std::string url;
    /// All facts but `freshUntil`.
    MediumFacts facts;
    /// Of the body, as the trailer has it.
    std::uint64_t checksum = 0;

    /// Absent when the trailer is missing, damaged or of another version. The body is not checked.
    static std::optional<MediumFile> read(const Data& file);
    static std::uint64_t checksumOf(const Data& body);
    /// The checksum of the first `size` bytes of a file, which are read in pieces: reading a large mapping would make
    /// all of it resident. Absent when the bytes cannot be read.
    static std::optional<std::uint64_t> checksumOf(int descriptor, std::size_t size);
    static std::string trailer(std::string_view url, const MediumFacts& facts, std::size_t bodySize,
                               std::uint64_t checksum);
    /// The name of the file for an address: 32 hexadecimal digits and an extension.
    static std::string nameFor(std::string_view url);
    static bool isName(std::string_view name);
};

}  // namespace ostrel
