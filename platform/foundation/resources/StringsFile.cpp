#include "platform/foundation/resources/StringsFile.h"

#include "platform/foundation/values/Text.h"

#include <algorithm>
#include <cstdint>
#include <optional>

namespace ostrel::detail {

namespace {

void appendUtf8(std::string& out, std::uint32_t code) {
    const auto continuation = [](std::uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += continuation(code);
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += continuation(code >> 6);
        out += continuation(code);
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += continuation(code >> 12);
        out += continuation(code >> 6);
        out += continuation(code);
    }
}

bool isHighSurrogate(std::uint32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(std::uint32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

class Parser final {
public:
    explicit Parser(std::string_view file) : file_(file), valid_(validUtf8Prefix(file)) {}

    StringsFile run() {
        while (readEntry()) {}
        return std::move(result_);
    }

private:
    /// False at the end of the file and at a syntax error.
    bool readEntry() {
        if (!skipBlanks() || atEnd()) return false;
        auto key = readString("a key in quotes is missing");
        if (!key || !expect('=', "a \"=\" is missing after the key")) return false;
        if (!skipBlanks()) return false;
        auto value = readString("a text in quotes is missing after the \"=\"");
        if (!value || !expect(';', "a \";\" is missing after the text")) return false;
        result_.texts.insert_or_assign(std::move(*key), std::move(*value));
        return true;
    }

    /// Skips blanks and comments. False when a comment does not end.
    bool skipBlanks() {
        for (;;) {
            while (!atEnd() && std::string_view(" \t\r\n\f\v").find(file_[position_]) != std::string_view::npos) {
                ++position_;
            }
            if (file_.substr(position_).starts_with("//")) {
                position_ = std::min(file_.find_first_of("\r\n", position_), file_.size());
            } else if (file_.substr(position_).starts_with("/*")) {
                const std::size_t end = file_.find("*/", position_ + 2);
                if (end == std::string_view::npos) return fail("a comment does not end", position_);
                position_ = end + 2;
            } else {
                return true;
            }
        }
    }

    bool expect(char character, const char* complaint) {
        if (!skipBlanks()) return false;
        if (atEnd() || file_[position_] != character) return fail(complaint, position_);
        ++position_;
        return true;
    }

    std::optional<std::string> readString(const char* complaint) {
        if (atEnd() || file_[position_] != '"') return failText(complaint, position_);
        const std::size_t start = position_++;
        std::string text;
        while (!atEnd() && file_[position_] != '"') {
            if (position_ >= valid_) return failText("the file is not valid UTF-8", position_);
            if (file_[position_] == '\\') {
                if (!readEscape(text)) return failText("an escape is wrong", position_);
            } else {
                text += file_[position_++];
            }
        }
        if (atEnd()) return failText("a text does not end", start);
        ++position_;
        return text;
    }

    bool readEscape(std::string& text) {
        if (position_ + 1 >= file_.size()) return false;
        const char escaped = file_[position_ + 1];
        static constexpr std::string_view names = "\"\\'nrt";
        static constexpr std::string_view meanings = "\"\\'\n\r\t";
        if (const std::size_t known = names.find(escaped); known != std::string_view::npos) {
            text += meanings[known];
            position_ += 2;
            return true;
        }
        const auto unit = readUnit(position_);
        if (!unit || isLowSurrogate(*unit)) return false;
        if (!isHighSurrogate(*unit)) {
            appendUtf8(text, *unit);
            position_ += unitLength;
            return true;
        }
        const auto second = readUnit(position_ + unitLength);
        if (!second || !isLowSurrogate(*second)) return false;
        appendUtf8(text, 0x10000 + ((*unit - 0xD800) << 10) + (*second - 0xDC00));
        position_ += 2 * unitLength;
        return true;
    }

    /// The four hexadecimal digits of "\UXXXX" (or "\uXXXX") at `position`.
    std::optional<std::uint32_t> readUnit(std::size_t position) const {
        const std::string_view escape = file_.substr(std::min(position, file_.size()), unitLength);
        if (escape.size() < unitLength || escape[0] != '\\' || (escape[1] != 'U' && escape[1] != 'u'))
            return std::nullopt;
        std::uint32_t unit = 0;
        for (const char c : escape.substr(2)) {
            const bool isLetter = (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
            if (!isLetter && (c < '0' || c > '9')) return std::nullopt;
            unit = unit * 16 + static_cast<std::uint32_t>(isLetter ? (c | 0x20) - 'a' + 10 : c - '0');
        }
        return unit;
    }

    bool fail(const char* complaint, std::size_t where) {
        const auto line = 1 + std::count(file_.begin(), file_.begin() + static_cast<std::ptrdiff_t>(where), '\n');
        result_.error = "line " + std::to_string(line) + ": " + complaint + ".";
        return false;
    }
    std::optional<std::string> failText(const char* complaint, std::size_t where) {
        fail(complaint, where);
        return std::nullopt;
    }
    bool atEnd() const { return position_ >= file_.size(); }

    static constexpr std::size_t unitLength = 6;

    std::string_view file_;
    std::size_t valid_;
    std::size_t position_ = 0;
    StringsFile result_;
};

}  // namespace

StringsFile parseStringsFile(std::string_view file) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    if (file.starts_with(byteOrderMark)) file.remove_prefix(byteOrderMark.size());
    return Parser(file).run();
}

}  // namespace ostrel::detail
