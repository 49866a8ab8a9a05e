#include "platform/foundation/values/NSURL.h"

#include <filesystem>

namespace ostrel {

namespace {

constexpr std::string_view fileScheme = "file:";

int hexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

std::string percentDecoded(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int high = hexDigit(text[i + 1]), low = hexDigit(text[i + 2]);
            if (high >= 0 && low >= 0) {
                result += static_cast<char>(high * 16 + low);
                i += 2;
                continue;
            }
        }
        result += text[i];
    }
    return result;
}

/// Whether a path may contain `c` unencoded: "pchar" of RFC 3986 without "%", and "/".
bool isPathCharacter(char c) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
    return std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

}  // namespace

NSURL NSURL::fileURLWithPath(const std::string& path) {
    if (path.empty()) return {};
    std::error_code failure;
    const std::filesystem::path absolute = std::filesystem::absolute(path, failure);
    std::string text = "file://";
    for (const char c : failure ? path : absolute.string()) {
        if (isPathCharacter(c)) {
            text += c;
        } else {
            constexpr std::string_view digits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            text += '%';
            text += digits[byte >> 4];
            text += digits[byte & 15];
        }
    }
    return NSURL(std::move(text));
}

bool NSURL::isFileURL() const { return text_.starts_with(fileScheme); }

std::string NSURL::path() const {
    std::string_view rest = text_;
    rest = rest.substr(0, rest.find_first_of("?#"));
    const std::size_t colon = rest.find(':');
    const std::size_t slash = rest.find('/');
    if (colon != std::string_view::npos && (slash == std::string_view::npos || colon < slash))
        rest.remove_prefix(colon + 1);
    if (rest.starts_with("//")) {
        const std::size_t afterHost = rest.find('/', 2);
        rest = afterHost == std::string_view::npos ? std::string_view() : rest.substr(afterHost);
    }
    return percentDecoded(rest);
}

std::string NSURL::lastPathComponent() const {
    std::string text = path();
    while (text.size() > 1 && text.back() == '/') text.pop_back();
    return text == "/" ? text : text.substr(text.rfind('/') + 1);
}

}  // namespace ostrel
