#pragma once

#include "backends/ffmpeg/file/InputFile.h"

#include <array>
#include <vector>

namespace ostrel {

/// Four bytes of a file that are to be read as others.
struct BytePatch {
    std::int64_t offset = 0;
    std::array<std::uint8_t, 4> bytes{};
};

/// What makes the index of an MP4 or MOV file seem to end after its first samples: the counts in its sample tables (ISO/IEC
/// 14496-12, 8.6 and 8.7) are lowered. The facts of an hour are then read as fast as those of ten seconds, for reading the
/// tables is nearly all of that work. Empty for other files and for short ones. In the order of their offsets.
std::vector<BytePatch> beginningOfIndex(const InputFile& file);

/// Applies the patches to `count` bytes that were read at `offset`.
void applyPatches(const std::vector<BytePatch>& patches, std::int64_t offset, std::uint8_t* bytes, int count);

}  // namespace ostrel
