#pragma once

#include "backends/ffmpeg/file/InputFile.h"

#include <array>
#include <vector>

namespace ostrel {

/// Other values for four bytes of a file, used instead of the bytes that are read.
struct BytePatch {
    std::int64_t offset = 0;
    std::array<std::uint8_t, 4> bytes{};
};

/// The patches that let the index of an MP4 or MOV file end after its first samples: they lower the counts in its
/// sample tables (ISO/IEC 14496-12, 8.6 and 8.7). A clip of an hour is then opened as fast as one of ten seconds,
/// because nearly all time is spent on reading the tables. Ordered by offset; empty for other formats and for short
/// clips.
std::vector<BytePatch> beginningOfIndex(const InputFile& file);

/// Applies the patches to `count` bytes that were read at `offset`.
void applyPatches(const std::vector<BytePatch>& patches, std::int64_t offset, std::uint8_t* bytes, int count);

}  // namespace ostrel
