#include "backends/ffmpeg/file/IndexBeginning.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace ostrel {

namespace {

/// How many samples stay: enough for the first picture and the pictures on which its decoding depends.
constexpr std::uint32_t keptSamples = 64;
/// How many boxes are read; each track of a file has fewer than thirty, and a file has at most 64 tracks.
constexpr int largestBoxCount = 4000;

std::uint32_t bigEndian32(const std::uint8_t* bytes) {
    return static_cast<std::uint32_t>(bytes[0]) << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

/// The facts of one track's sample tables that decide whether they can be shortened.
struct TrackTables {
    std::vector<BytePatch> patches;
    std::int64_t chunkCountOffset = 0;
    std::uint32_t chunkCount = 0;
    /// The last chunk that the kept entries of "stsc" name; the kept offsets of chunks must include it.
    std::uint32_t lastRun = 0;
    /// Ticks per second.
    std::uint32_t ticks = 0;
    /// Ticks.
    std::int64_t latestEditStart = 0;
};

class IndexWalk final {
public:
    explicit IndexWalk(const InputFile& file) : file_(file) {}

    std::vector<BytePatch> patches() {
        walk(0, file_.size(), "");
        if (!isWhole_) patches_.clear();
        std::sort(patches_.begin(), patches_.end(),
                  [](const BytePatch& a, const BytePatch& b) { return a.offset < b.offset; });
        return std::move(patches_);
    }

private:
    void walk(std::int64_t offset, std::int64_t end, std::string_view parent) {
        while (offset + 8 <= end) {
            std::array<std::uint8_t, 16> start{};
            if (++boxes_ > largestBoxCount || !read(offset, start)) break;
            std::int64_t length = bigEndian32(start.data());
            std::int64_t header = 8;
            if (length == 1) {
                length =
                    static_cast<std::int64_t>(bigEndian32(start.data() + 8)) << 32 | bigEndian32(start.data() + 12);
                header = 16;
            }
            if (length == 0) length = end - offset;
            if (length < header || length > end - offset) break;
            enter({reinterpret_cast<const char*>(start.data()) + 4, 4}, parent, offset, header, offset + length);
            offset += length;
        }
    }

    void enter(std::string_view type, std::string_view parent, std::int64_t offset, std::int64_t header,
               std::int64_t end) {
        const auto is = [&](std::string_view outer, std::string_view inner) {
            return parent == outer && type == inner;
        };
        if (is("moov", "trak")) {
            track_ = {};
            walk(offset + header, end, "trak");
            finishTrack();
        } else if (is("", "moov")) {
            walk(offset + header, end, "moov");
        } else if (is("trak", "mdia") || is("mdia", "minf") || is("minf", "stbl") || is("trak", "edts")) {
            walk(offset + header, end, type);
        } else if (is("mdia", "mdhd")) {
            readClock(offset + header);
        } else if (is("edts", "elst")) {
            readEdits(offset + header);
        } else if (parent == "stbl") {
            lowerCount(type, offset + header);
        }
    }

    template <std::size_t count>
    bool read(std::int64_t offset, std::array<std::uint8_t, count>& bytes) const {
        return file_.read(offset, bytes.data(), static_cast<int>(count)) == static_cast<int>(count);
    }
    std::uint32_t number(std::int64_t offset) const {
        std::array<std::uint8_t, 4> bytes{};
        return read(offset, bytes) ? bigEndian32(bytes.data()) : 0;
    }

    void readClock(std::int64_t body) {
        const bool isLong = number(body) >> 24 == 1;
        track_.ticks = number(body + (isLong ? 20 : 12));
    }

    void readEdits(std::int64_t body) {
        const bool isLong = number(body) >> 24 == 1;
        constexpr std::uint32_t largestEditCount = 16;
        const std::uint32_t count = number(body + 4);
        if (count > largestEditCount) isWhole_ = false;
        for (std::uint32_t i = 0; i < std::min(count, largestEditCount); ++i) {
            const std::int64_t entry = body + 8 + std::int64_t{i} * (isLong ? 20 : 12);
            const auto high = static_cast<std::int32_t>(isLong ? number(entry + 8) : 0);
            const std::int64_t start = isLong ? static_cast<std::int64_t>(high) << 32 | number(entry + 12)
                                              : static_cast<std::int32_t>(number(entry + 4));
            track_.latestEditStart = std::max(track_.latestEditStart, start);
        }
    }

    /// Lowers the count of a sample table: after version and flags; in "stsz" after the common size of samples too.
    void lowerCount(std::string_view type, std::int64_t body) {
        const bool isSizes = type == "stsz" || type == "stz2";
        const std::int64_t at = body + (isSizes ? 8 : 4);
        if (type == "stco" || type == "co64") {
            track_.chunkCountOffset = at;
            track_.chunkCount = number(at);
        } else if (isSizes || type == "stts" || type == "ctts" || type == "stss" || type == "stsc") {
            const std::uint32_t count = std::min(number(at), keptSamples);
            if (type == "stsc" && count > 0) track_.lastRun = number(at + 4 + (std::int64_t{count} - 1) * 12);
            if (number(at) > keptSamples) track_.patches.push_back({at, {0, 0, 0, keptSamples}});
        }
    }

    void finishTrack() {
        // An edit list that begins more than a tenth of a second after the first picture needs samples further on.
        // Clips with B-pictures begin a little later than their first picture.
        constexpr std::int64_t editsInSecond = 10;
        if (track_.latestEditStart * editsInSecond > track_.ticks) isWhole_ = false;
        const std::uint32_t chunks = std::max<std::uint32_t>(keptSamples, track_.lastRun);
        if (track_.chunkCount > chunks) {
            const auto part = [&](int shift) { return static_cast<std::uint8_t>(chunks >> shift); };
            track_.patches.push_back({track_.chunkCountOffset, {part(24), part(16), part(8), part(0)}});
        }
        patches_.insert(patches_.end(), track_.patches.begin(), track_.patches.end());
    }

    const InputFile& file_;
    std::vector<BytePatch> patches_;
    TrackTables track_;
    int boxes_ = 0;
    /// The shortened index suffices for the first picture.
    bool isWhole_ = true;
};

}  // namespace

std::vector<BytePatch> beginningOfIndex(const InputFile& file) {
    std::array<std::uint8_t, 8> start{};
    if (file.read(0, start.data(), static_cast<int>(start.size())) != static_cast<int>(start.size())) return {};
    const std::string_view type(reinterpret_cast<const char*>(start.data()) + 4, 4);
    constexpr std::array<std::string_view, 6> firstBoxes{"ftyp", "moov", "wide", "mdat", "free", "skip"};
    if (std::find(firstBoxes.begin(), firstBoxes.end(), type) == firstBoxes.end()) return {};
    return IndexWalk(file).patches();
}

void applyPatches(const std::vector<BytePatch>& patches, std::int64_t offset, std::uint8_t* bytes, int count) {
    for (const BytePatch& patch : patches) {
        for (std::size_t i = 0; i < patch.bytes.size(); ++i) {
            const std::int64_t at = patch.offset + static_cast<std::int64_t>(i) - offset;
            if (at >= 0 && at < count) bytes[at] = patch.bytes[i];
        }
    }
}

}  // namespace ostrel
