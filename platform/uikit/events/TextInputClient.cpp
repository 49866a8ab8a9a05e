#include "platform/uikit/events/TextInputClient.h"

namespace ostrel {

std::string_view prefixOfUtf16Length(std::string_view text, std::size_t units) {
    std::size_t end = 0;
    while (end < text.size()) {
        const auto lead = static_cast<unsigned char>(text[end]);
        std::size_t next = end + 1;
        while (next < text.size() && (static_cast<unsigned char>(text[next]) & 0xC0) == 0x80) ++next;
        // Four bytes of UTF-8 are a surrogate pair (RFC 3629, section 3).
        const std::size_t length = lead >= 0xF0 ? 2 : 1;
        if (length > units) break;
        units -= length;
        end = next;
    }
    return text.substr(0, end);
}

std::size_t utf16Length(std::string_view text) {
    std::size_t length = 0;
    for (const char byte : text) {
        const auto lead = static_cast<unsigned char>(byte);
        if ((lead & 0xC0) != 0x80) length += lead >= 0xF0 ? 2 : 1;
    }
    return length;
}

}  // namespace ostrel
