#include "platform/graphics/UIImage.h"

#include <algorithm>
#include <cstring>

namespace ostrel {

namespace {

constexpr int largestSide = 65500;

/// The bytes of a file that may be cut short or hostile: reading beyond the end gives 0 and marks the reading
/// as failed.
class Bytes final {
public:
    explicit Bytes(std::string_view bytes) : bytes_(bytes) {}

    std::size_t size() const { return bytes_.size(); }
    bool failed() const { return failed_; }
    bool has(std::size_t offset, std::string_view expected) const {
        return offset <= bytes_.size() && bytes_.substr(offset, expected.size()) == expected;
    }
    unsigned byte(std::size_t offset) const {
        if (offset < bytes_.size()) return static_cast<unsigned char>(bytes_[offset]);
        failed_ = true;
        return 0;
    }
    unsigned big16(std::size_t offset) const { return byte(offset) << 8 | byte(offset + 1); }
    unsigned big32(std::size_t offset) const { return big16(offset) << 16 | big16(offset + 2); }
    unsigned little16(std::size_t offset) const { return byte(offset) | byte(offset + 1) << 8; }
    unsigned little24(std::size_t offset) const { return little16(offset) | byte(offset + 2) << 16; }
    unsigned little32(std::size_t offset) const { return little16(offset) | little16(offset + 2) << 16; }
    Bytes part(std::size_t offset, std::size_t length) const {
        return Bytes(offset <= bytes_.size() ? bytes_.substr(offset, length) : std::string_view());
    }

private:
    std::string_view bytes_;
    mutable bool failed_ = false;
};

std::optional<ImageHeader> checked(const Bytes& bytes, ImageFormat format, std::int64_t width, std::int64_t height,
                                   int orientation = 1) {
    if (bytes.failed() || width < 1 || height < 1 || width > largestSide || height > largestSide) return std::nullopt;
    ImageHeader header{.format = format, .orientation = orientation};
    // Orientations 5 to 8 turn the picture by 90 degrees.
    header.pixelWidth = static_cast<int>(orientation >= 5 ? height : width);
    header.pixelHeight = static_cast<int>(orientation >= 5 ? width : height);
    return header;
}

/// The orientation in a TIFF structure (TIFF 6.0, tag 274); 1 when the tag is missing.
int tiffOrientation(const Bytes& tiff) {
    const bool little = tiff.has(0, std::string_view("II*\0", 4));
    if (!little && !tiff.has(0, std::string_view("MM\0*", 4))) return 1;
    const auto short_ = [&](std::size_t offset) { return little ? tiff.little16(offset) : tiff.big16(offset); };
    const std::size_t directory = little ? tiff.little32(4) : tiff.big32(4);
    if (directory >= tiff.size()) return 1;
    const unsigned entries = short_(directory);
    for (unsigned i = 0; i < entries; ++i) {
        const std::size_t entry = directory + 2 + std::size_t{12} * i;
        if (entry + 12 > tiff.size()) break;
        constexpr unsigned orientationTag = 274, shortType = 3;
        if (short_(entry) != orientationTag) continue;
        const unsigned value = short_(entry + 8);
        return short_(entry + 2) == shortType && value >= 1 && value <= 8 ? static_cast<int>(value) : 1;
    }
    return 1;
}

/// The bytes of all coefficients, two bytes each, of the frame whose header is at `at` (ITU-T T.81, B.2.2).
/// Sizes are rounded up to blocks.
std::int64_t jpegCoefficientBytes(const Bytes& bytes, std::size_t at) {
    const unsigned components = bytes.byte(at + 9);
    unsigned samples = 0, widest = 1, highest = 1;
    for (unsigned i = 0; i < components; ++i) {
        const unsigned factors = bytes.byte(at + 11 + std::size_t{3} * i);
        samples += (factors >> 4) * (factors & 15);
        widest = std::max(widest, factors >> 4);
        highest = std::max(highest, factors & 15);
    }
    const std::int64_t columns = (bytes.big16(at + 7) + 8 * widest - 1) / (8 * widest);
    const std::int64_t rows = (bytes.big16(at + 5) + 8 * highest - 1) / (8 * highest);
    return columns * rows * samples * 64 * 2;
}

/// Whether the first scan after `at` holds all `components` with all coefficients (B.2.3), so that the blocks
/// can be decoded one after the other. False when no scan is found.
bool isInOneScan(const Bytes& bytes, std::size_t at, unsigned components) {
    while (at + 5 <= bytes.size() && bytes.byte(at) == 0xFF) {
        const unsigned marker = bytes.byte(at + 1);
        if (marker == 0xFF) {
            ++at;
        } else if (marker == 0xDA) {
            return bytes.byte(at + 4) >= components;
        } else {
            at += 2 + std::max(2u, bytes.big16(at + 2));
        }
    }
    return false;
}

/// ITU-T T.81, annex B: segments up to the frame header (SOF).
std::optional<ImageHeader> readJpeg(const Bytes& bytes) {
    int orientation = 1;
    std::size_t at = 2;
    while (at + 4 <= bytes.size()) {
        if (bytes.byte(at) != 0xFF) return std::nullopt;
        const unsigned marker = bytes.byte(at + 1);
        if (marker == 0xFF) {  // fill byte
            ++at;
            continue;
        }
        if (marker == 0x01 || (marker >= 0xD0 && marker <= 0xD7)) {  // markers without a length
            at += 2;
            continue;
        }
        if (marker == 0xD8 || marker == 0xD9 || marker == 0xDA || marker == 0) return std::nullopt;
        const std::size_t length = bytes.big16(at + 2);
        if (length < 2) return std::nullopt;
        const bool isFrame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
        if (isFrame) {
            if (length < 8) return std::nullopt;
            auto header = checked(bytes, ImageFormat::jpeg, bytes.big16(at + 7), bytes.big16(at + 5), orientation);
            const bool isSequential = marker <= 0xC1;
            if (header && !(isSequential && isInOneScan(bytes, at + 2 + length, bytes.byte(at + 9)))) {
                header->coefficientBytes = jpegCoefficientBytes(bytes, at);
            }
            return header;
        }
        constexpr std::string_view exif("Exif\0\0", 6);
        if (marker == 0xE1 && bytes.has(at + 4, exif) && length >= 2 + exif.size()) {
            orientation = tiffOrientation(bytes.part(at + 4 + exif.size(), length - 2 - exif.size()));
        }
        at += 2 + length;
    }
    return std::nullopt;
}

/// RFC 9649: a RIFF file whose first chunk holds the size.
std::optional<ImageHeader> readWebP(const Bytes& bytes) {
    constexpr std::size_t payload = 20;
    if (bytes.has(12, "VP8X")) {
        return checked(bytes, ImageFormat::webp, bytes.little24(payload + 4) + 1, bytes.little24(payload + 7) + 1);
    }
    if (bytes.has(12, "VP8L")) {
        const unsigned sizes = bytes.little32(payload + 1);
        if (bytes.byte(payload) != 0x2F) return std::nullopt;
        return checked(bytes, ImageFormat::webp, (sizes & 0x3FFF) + 1, (sizes >> 14 & 0x3FFF) + 1);
    }
    if (bytes.has(12, "VP8 ") && bytes.has(payload + 3, "\x9D\x01\x2A")) {
        return checked(bytes, ImageFormat::webp, bytes.little16(payload + 6) & 0x3FFF,
                       bytes.little16(payload + 8) & 0x3FFF);
    }
    return std::nullopt;
}

}  // namespace

std::optional<ImageHeader> ImageHeader::read(const Data& data) {
    const Bytes bytes(data.view());
    if (bytes.has(0, "\x89PNG\r\n\x1A\n") && bytes.has(12, "IHDR")) {
        return checked(bytes, ImageFormat::png, bytes.big32(16), bytes.big32(20));
    }
    if (bytes.has(0, "\xFF\xD8\xFF")) return readJpeg(bytes);
    if (bytes.has(0, "GIF87a") || bytes.has(0, "GIF89a")) {
        return checked(bytes, ImageFormat::gif, bytes.little16(6), bytes.little16(8));
    }
    if (bytes.has(0, "RIFF") && bytes.has(8, "WEBP")) return readWebP(bytes);
    return std::nullopt;
}

}  // namespace ostrel
