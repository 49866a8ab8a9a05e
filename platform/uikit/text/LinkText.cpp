#include "platform/uikit/text/LinkText.h"

#include "platform/graphics/TextMeasurer.h"

#include <algorithm>
#include <cctype>
#include <vector>

namespace ostrel {

namespace {

bool isLetterOrDigit(unsigned char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

/// The byte offset of every character of a UTF-8 text, and the end of the text.
std::vector<std::size_t> characterStarts(std::string_view text) {
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) starts.push_back(i);
    }
    starts.push_back(text.size());
    return starts;
}

}  // namespace

LinkText linkText(std::string_view address) {
    const auto colon = address.find(':');
    std::string scheme;
    for (const unsigned char c : address.substr(0, colon == std::string_view::npos ? 0 : colon)) {
        scheme += static_cast<char>(std::tolower(c));
    }
    const bool hasAuthority = colon != std::string_view::npos && address.substr(colon + 1).starts_with("//");
    if (!hasAuthority) return {std::string(address), {}, false};
    std::string_view rest = address.substr(colon + 3);
    const auto end = std::min(rest.find_first_of("/?#"), rest.size());
    std::string_view authority = rest.substr(0, end);
    const std::string_view path = rest.substr(end);
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) authority.remove_prefix(at + 1);
    if (authority.empty()) return {std::string(address), {}, false};
    return {std::string(authority), path == "/" ? std::string() : std::string(path),
            scheme == "http" || scheme == "https"};
}

std::string mailAddress(std::string_view body) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string address = "mailto:?body=";
    for (const unsigned char c : body) {
        // The unreserved characters of RFC 3986, section 2.3, stay; others are percent-encoded.
        if (isLetterOrDigit(c) || c == '-' || c == '.' || c == '_' || c == '~') {
            address += static_cast<char>(c);
        } else {
            address += '%';
            address += digits[c >> 4];
            address += digits[c & 15];
        }
    }
    return address;
}

std::string truncatedInMiddle(const std::string& text, const UIFont& font, CGFloat width) {
    TextMeasurer& measurer = TextMeasurer::shared();
    if (text.empty() || measurer.singleLineWidth(text, font) <= width) return text;
    const auto starts = characterStarts(text);
    const std::size_t count = starts.size() - 1;
    const auto shortened = [&](std::size_t kept) {
        const std::size_t tail = kept / 2, head = kept - tail;
        return text.substr(0, starts[head]) + "…" + text.substr(starts[count - tail]);
    };
    std::size_t low = 0, high = count;
    while (low + 1 < high) {
        const std::size_t middle = (low + high) / 2;
        (measurer.singleLineWidth(shortened(middle), font) <= width ? low : high) = middle;
    }
    return shortened(low);
}

}  // namespace ostrel
