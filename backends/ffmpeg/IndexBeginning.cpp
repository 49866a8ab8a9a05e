#include "backends/ffmpeg/IndexBeginning.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace ostrel {

namespace {

/// Enough for the first picture of any clip, with the pictures that it is decoded with.
constexpr std::uint32_t keptSamples = 64;
/// Boxes looked at; a file of `largestStreamCount` tracks has fewer than thirty each.
constexpr int largestBoxCount = 4000;

std::uint32_t bigEndian32(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

class IndexWalk final {
public:
    explicit IndexWalk(const InputFile& file) : file_(file) {}

    std::vector<BytePatch> patches() {
        walk(0, file_.size(), 0);
        std::sort(patches_.begin(), patches_.end(),
                  [](const BytePatch& a, const BytePatch& b) { return a.offset < b.offset; });
        return std::move(patches_);
    }

private:
    void walk(std::int64_t offset, std::int64_t end, int depth) {
        constexpr std::array<std::string_view, 5> path{"moov", "trak", "mdia", "minf", "stbl"};
        while (offset + 8 <= end && ++boxes_ <= largestBoxCount) {
            std::array<std::uint8_t, 20> start{};
            const int got = file_.read(offset, start.data(), static_cast<int>(start.size()));
            if (got < 8) return;
            std::int64_t length = bigEndian32(start.data());
            std::int64_t header = 8;
            if (length == 1 && got >= 16) {
                length = static_cast<std::int64_t>(bigEndian32(start.data() + 8)) << 32 |
                         bigEndian32(start.data() + 12);
                header = 16;
            }
            if (length == 0) length = end - offset;
            if (length < header || length > end - offset) return;
            const std::string_view type(reinterpret_cast<const char*>(start.data()) + 4, 4);
            if (static_cast<std::size_t>(depth) < path.size()) {
                if (type == path[static_cast<std::size_t>(depth)])
                    walk(offset + header, offset + length, depth + 1);
            } else if (header == 8 && got == static_cast<int>(start.size())) {
                lowerCount(type, offset, start.data());
            }
            offset += length;
        }
    }

    /// A full box: length, type, version and flags, then the count; in "stsz" the common size of samples comes before it.
    void lowerCount(std::string_view type, std::int64_t offset, const std::uint8_t* start) {
        constexpr std::array<std::string_view, 6> tables{"stts", "ctts", "stsc", "stss", "stco", "co64"};
        const bool isSizes = type == "stsz" || type == "stz2";
        if (!isSizes && std::find(tables.begin(), tables.end(), type) == tables.end()) return;
        const int at = isSizes ? 16 : 12;
        if (bigEndian32(start + at) <= keptSamples) return;
        patches_.push_back({offset + at, {0, 0, 0, keptSamples}});
    }

    const InputFile& file_;
    std::vector<BytePatch> patches_;
    int boxes_ = 0;
};

}  // namespace

std::vector<BytePatch> beginningOfIndex(const InputFile& file) {
    std::array<std::uint8_t, 8> start{};
    if (file.read(0, start.data(), static_cast<int>(start.size())) != static_cast<int>(start.size()))
        return {};
    const std::string_view type(reinterpret_cast<const char*>(start.data()) + 4, 4);
    constexpr std::array<std::string_view, 6> firstBoxes{"ftyp", "moov", "wide", "mdat", "free", "skip"};
    if (std::find(firstBoxes.begin(), firstBoxes.end(), type) == firstBoxes.end()) return {};
    return IndexWalk(file).patches();
}

void applyPatches(const std::vector<BytePatch>& patches, std::int64_t offset, std::uint8_t* bytes,
                  int count) {
    for (const BytePatch& patch : patches) {
        for (std::size_t i = 0; i < patch.bytes.size(); ++i) {
            const std::int64_t at = patch.offset + static_cast<std::int64_t>(i) - offset;
            if (at >= 0 && at < count) bytes[at] = patch.bytes[i];
        }
    }
}

}  // namespace ostrel
