#include "articleserver/media/ExifOrientation.h"

#include <cstddef>
#include <cstdint>
#include <optional>

namespace articleserver {

namespace {

constexpr std::string_view header("Exif\0\0", 6);
constexpr std::uint32_t orientationTag = 0x0112;
constexpr std::uint32_t shortType = 3;
constexpr std::size_t entrySize = 12;

/// Reads a TIFF block (TIFF 6.0, section 2) in the byte order that the block states. A number beyond its end
/// is absent.
class TiffBlock final {
public:
    explicit TiffBlock(std::string_view bytes) : bytes_(bytes), isBig_(bytes.substr(0, 2) == "MM") {}

    bool isValid() const {
        std::string_view order = bytes_.substr(0, 2);
        return (order == "MM" || order == "II") && number(2, 2) == 42U;
    }

    std::optional<std::uint32_t> number(std::size_t offset, std::size_t size) const {
        if (offset > bytes_.size() || bytes_.size() - offset < size) return std::nullopt;
        std::uint32_t value = 0;
        for (std::size_t index = 0; index < size; ++index) {
            std::size_t at = offset + (isBig_ ? index : size - 1 - index);
            value = value << 8 | static_cast<unsigned char>(bytes_[at]);
        }
        return value;
    }

private:
    std::string_view bytes_;
    bool isBig_;
};

}  // namespace

int exifOrientationOf(std::string_view segment) {
    if (!segment.starts_with(header)) return 1;
    TiffBlock block(segment.substr(header.size()));
    if (!block.isValid()) return 1;
    auto directory = block.number(4, 4);
    auto count = directory ? block.number(*directory, 2) : std::nullopt;
    for (std::size_t index = 0; count && index < *count; ++index) {
        std::size_t entry = std::size_t{*directory} + 2 + index * entrySize;
        auto tag = block.number(entry, 2);
        if (!tag) return 1;
        if (*tag != orientationTag) continue;
        auto value = block.number(entry + 8, 2);
        bool isOne = block.number(entry + 2, 2) == shortType && block.number(entry + 4, 4) == 1U;
        return isOne && value && *value >= 1 && *value <= 8 ? static_cast<int>(*value) : 1;
    }
    return 1;
}

}  // namespace articleserver
