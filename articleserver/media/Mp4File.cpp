#include "articleserver/media/Mp4File.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>
#include <string_view>

namespace articleserver {

namespace {

// A fragmented file has two boxes for each fragment. The limit allows fragments of one second for a whole
// day.
constexpr int boxesAtMost = 200'000;
constexpr std::uint64_t brandsAtMost = 64;

ServerFailure noMp4() { return {ServerFault::unsupported, "The video is not an MP4 file."}; }
ServerFailure broken() { return {ServerFault::badInput, "The video is broken."}; }
ServerFailure cutShort() { return {ServerFault::badInput, "The video is broken: its end is missing."}; }

struct Span {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

struct Box {
    std::uint32_t type = 0;
    Span content;
};

constexpr std::uint32_t code(std::string_view text) {
    std::uint32_t value = 0;
    for (char character : text) value = value << 8 | static_cast<unsigned char>(character);
    return value;
}

bool isBrand(std::uint32_t brand) {
    switch (brand) {
    case code("isom"):
    case code("mp41"):
    case code("mp42"):
    case code("avc1"):
    case code("M4V "):
    case code("dash"): return true;
    default: return brand >> 8 == code("iso") && (brand & 0xFF) >= '2' && (brand & 0xFF) <= '9';
    }
}

/// Reads big-endian numbers at given places of a file.
class BoxReader final {
public:
    BoxReader(int descriptor, std::uint64_t size) : descriptor_(descriptor), size_(size) {}

    std::uint64_t size() const { return size_; }

    std::optional<std::uint64_t> number(std::uint64_t at, int bytes) const {
        std::array<unsigned char, 8> raw{};
        if (at + static_cast<std::uint64_t>(bytes) > size_ ||
            ::pread(descriptor_, raw.data(), static_cast<std::size_t>(bytes), static_cast<off_t>(at)) != bytes) {
            return std::nullopt;
        }
        std::uint64_t value = 0;
        for (int index = 0; index < bytes; ++index) value = value << 8 | raw[static_cast<std::size_t>(index)];
        return value;
    }
    std::uint64_t numberOrZero(std::uint64_t at, int bytes) const { return number(at, bytes).value_or(0); }

    /// Calls `visit` with each box of `span` in turn; false when the boxes do not fill the span exactly.
    bool eachBox(Span span, const std::function<void(const Box&)>& visit) {
        for (std::uint64_t at = span.begin; at < span.end;) {
            auto size = number(at, 4);
            auto type = number(at + 4, 4);
            if (!size || !type || ++boxes_ > boxesAtMost) return false;
            std::uint64_t head = 8;
            if (*size == 1) {
                size = number(at + 8, 8);
                head = 16;
            } else if (*size == 0) {
                size = span.end - at;
            }
            if (!size || *size < head || *size > span.end - at) return false;
            visit({static_cast<std::uint32_t>(*type), {at + head, at + *size}});
            at += *size;
        }
        return true;
    }

private:
    int descriptor_;
    std::uint64_t size_;
    int boxes_ = 0;
};

bool namesMp4(const BoxReader& file, Span content) {
    std::uint64_t count = 0;
    for (std::uint64_t at = content.begin; at + 4 <= content.end && count < brandsAtMost; at += 4, ++count) {
        // The second number is the version of the brand, not a brand.
        if (count != 1 && isBrand(static_cast<std::uint32_t>(file.numberOrZero(at, 4)))) return true;
    }
    return false;
}

/// The duration in a movie header box, in seconds (ISO/IEC 14496-12, 8.2.2).
double durationOf(const BoxReader& file, Span header) {
    const bool isLong = file.numberOrZero(header.begin, 1) == 1;
    const std::uint64_t scale = file.numberOrZero(header.begin + (isLong ? 20 : 12), 4);
    const std::uint64_t units = file.numberOrZero(header.begin + (isLong ? 24 : 16), isLong ? 8 : 4);
    // A duration of all ones is unknown.
    if (scale == 0 || units == (isLong ? ~std::uint64_t{0} : 0xFFFFFFFFU)) return 0;
    return static_cast<double>(units) / static_cast<double>(scale);
}

struct Track {
    bool isVideo = false;
    int width = 0;
    int height = 0;
};

/// Reads size and matrix of a track header box (8.3.2). Its numbers have 16.16 bits; the matrix is stored by
/// rows.
void readTrackHeader(const BoxReader& file, Span header, Track& track) {
    const std::uint64_t matrix = header.begin + (file.numberOrZero(header.begin, 1) == 1 ? 52 : 40);
    const auto entry = [&](std::uint64_t index) {
        return std::abs(static_cast<double>(static_cast<std::int32_t>(file.numberOrZero(matrix + index * 4, 4))));
    };
    track.width = static_cast<int>((file.numberOrZero(matrix + 36, 4) + 0x8000) >> 16);
    track.height = static_cast<int>((file.numberOrZero(matrix + 40, 4) + 0x8000) >> 16);
    const bool isSideways = entry(1) + entry(3) > entry(0) + entry(4);
    if (isSideways) std::swap(track.width, track.height);
}

std::optional<Track> trackOf(BoxReader& file, Span content) {
    Track track;
    bool isWhole = true;
    isWhole &= file.eachBox(content, [&](const Box& box) {
        if (box.type == code("tkhd")) readTrackHeader(file, box.content, track);
        if (box.type != code("mdia")) return;
        isWhole &= file.eachBox(box.content, [&](const Box& inner) {
            if (inner.type != code("hdlr")) return;
            track.isVideo = file.numberOrZero(inner.content.begin + 8, 4) == code("vide");
        });
    });
    return isWhole ? std::optional(track) : std::nullopt;
}

}  // namespace

ServerResult<Mp4Facts> inspectMp4(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || status.st_size < 8) return noMp4();
    BoxReader file(descriptor, static_cast<std::uint64_t>(status.st_size));
    if (file.number(4, 4) != code("ftyp")) return noMp4();

    bool isMp4 = false;
    bool hasMedia = false;
    std::optional<Span> movie;
    const bool isWhole = file.eachBox({0, file.size()}, [&](const Box& box) {
        if (box.type == code("ftyp")) isMp4 = isMp4 || namesMp4(file, box.content);
        if (box.type == code("moov")) movie = box.content;
        if (box.type == code("mdat")) hasMedia = true;
    });
    if (!isMp4) return isWhole ? noMp4() : broken();
    if (!isWhole || !movie || !hasMedia) return cutShort();

    Mp4Facts facts;
    bool hasVideo = false;
    bool isReadable = true;
    isReadable &= file.eachBox(*movie, [&](const Box& box) {
        if (box.type == code("mvhd")) facts.duration = durationOf(file, box.content);
        if (box.type != code("trak") || hasVideo) return;
        const auto track = trackOf(file, box.content);
        isReadable = isReadable && track;
        if (!track || !track->isVideo) return;
        hasVideo = true;
        facts.width = track->width;
        facts.height = track->height;
    });
    if (!isReadable) return broken();
    if (!hasVideo) return ServerFailure{ServerFault::unsupported, "The file holds no film."};
    if (facts.width <= 0 || facts.height <= 0) return broken();
    return facts;
}

}  // namespace articleserver
