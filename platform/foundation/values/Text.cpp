#include "platform/foundation/values/Text.h"

#include <cstring>

namespace ostrel {

std::string replacingOccurrences(std::string_view text, std::string_view from, std::string_view to) {
    if (from.empty()) return std::string(text);
    std::string result;
    result.reserve(text.size());
    std::size_t copied = 0;
    for (std::size_t found; (found = text.find(from, copied)) != std::string_view::npos;) {
        result.append(text.substr(copied, found - copied)).append(to);
        copied = found + from.size();
    }
    result.append(text.substr(copied));
    return result;
}

std::size_t validUtf8Prefix(std::string_view text) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size();
    std::size_t position = 0;
    while (position < size) {
        // Eight ASCII bytes at a time, because most texts are mostly ASCII.
        std::uint64_t eight;
        if (size - position >= sizeof eight) {
            std::memcpy(&eight, bytes + position, sizeof eight);
            if ((eight & 0x8080808080808080u) == 0) {
                position += sizeof eight;
                continue;
            }
        }
        const unsigned char lead = bytes[position];
        if (lead < 0x80) {
            ++position;
            continue;
        }
        // The table of RFC 3629, section 4: the range of the second byte excludes overlong forms, surrogates
        // and code points above U+10FFFF.
        std::size_t length = 0;
        unsigned char low = 0x80;
        unsigned char high = 0xBF;
        if (lead >= 0xC2 && lead <= 0xDF) {
            length = 2;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            length = 3;
            if (lead == 0xE0) low = 0xA0;
            if (lead == 0xED) high = 0x9F;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            length = 4;
            if (lead == 0xF0) low = 0x90;
            if (lead == 0xF4) high = 0x8F;
        }
        if (length == 0 || size - position < length) return position;
        if (bytes[position + 1] < low || bytes[position + 1] > high) return position;
        for (std::size_t i = 2; i < length; ++i) {
            if ((bytes[position + i] & 0xC0) != 0x80) return position;
        }
        position += length;
    }
    return size;
}

std::string formatLong(std::string_view format, std::int64_t value) {
    const std::size_t found = format.find("%ld");
    if (found == std::string_view::npos) return std::string(format);
    return std::string(format.substr(0, found)) + decimalText(value) + std::string(format.substr(found + 3));
}

}  // namespace ostrel
