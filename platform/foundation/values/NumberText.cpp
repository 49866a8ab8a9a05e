#include "platform/foundation/values/NumberText.h"

#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is in no C++ header

namespace ostrel::detail {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::size_t digitsAt(std::string_view text, std::size_t position) {
    std::size_t end = position;
    while (end < text.size() && isDigit(text[end])) ++end;
    return end - position;
}

std::string_view withoutLeadingBlanks(std::string_view text) {
    const std::size_t start = text.find_first_not_of(" \t\n\v\f\r");
    return start == std::string_view::npos ? std::string_view() : text.substr(start);
}

}  // namespace

std::size_t leadingNumberLength(std::string_view text) {
    std::size_t position = !text.empty() && (text[0] == '-' || text[0] == '+') ? 1 : 0;
    const std::size_t whole = digitsAt(text, position);
    position += whole;
    std::size_t fraction = 0;
    if (position < text.size() && text[position] == '.') {
        fraction = digitsAt(text, position + 1);
        if (whole + fraction > 0) position += 1 + fraction;
    }
    if (whole + fraction == 0) return 0;
    if (position < text.size() && (text[position] == 'e' || text[position] == 'E')) {
        std::size_t exponent = position + 1;
        if (exponent < text.size() && (text[exponent] == '-' || text[exponent] == '+')) ++exponent;
        const std::size_t digits = digitsAt(text, exponent);
        if (digits > 0) position = exponent + digits;
    }
    return position;
}

bool isJsonNumber(std::string_view text) {
    if (text.empty() || leadingNumberLength(text) != text.size() || text[0] == '+') return false;
    const std::size_t start = text[0] == '-' ? 1 : 0;
    const std::size_t whole = digitsAt(text, start);
    if (whole == 0 || (whole > 1 && text[start] == '0')) return false;
    const std::size_t point = start + whole;
    return point >= text.size() || text[point] != '.' || digitsAt(text, point + 1) > 0;
}

double doubleOfText(std::string_view number) {
    double value = 0;
    const std::string_view unsignedPlus = number.starts_with('+') ? number.substr(1) : number;
    const auto result = std::from_chars(unsignedPlus.data(), unsignedPlus.data() + unsignedPlus.size(), value);
    if (result.ec != std::errc::result_out_of_range) return value;
    // from_chars does not tell overflow from underflow; strtod does, and needs the "C" locale.
    static const locale_t plain = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(std::string(number).c_str(), nullptr, plain);
}

std::int64_t leadingInteger(std::string_view text) {
    std::string_view rest = withoutLeadingBlanks(text);
    const bool isNegative = rest.starts_with('-');
    // from_chars rejects a plus sign, and "+-1" is not a number.
    if (rest.starts_with('+')) {
        rest.remove_prefix(1);
        if (rest.starts_with('-')) return 0;
    }
    std::int64_t value = 0;
    const auto result = std::from_chars(rest.data(), rest.data() + rest.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        return isNegative ? std::numeric_limits<std::int64_t>::min() : std::numeric_limits<std::int64_t>::max();
    }
    return value;
}

double leadingNumber(std::string_view text) {
    const std::string_view rest = withoutLeadingBlanks(text);
    const std::size_t length = leadingNumberLength(rest);
    if (length == 0) return 0;
    const double value = doubleOfText(rest.substr(0, length));
    return std::isinf(value) ? std::copysign(std::numeric_limits<double>::max(), value) : value;
}

std::string shortestText(double number) {
    const double magnitude = std::fabs(number);
    const bool isPlain = number == 0 || (magnitude >= 1e-6 && magnitude < 1e21);
    char buffer[64];
    const auto result = std::to_chars(buffer, buffer + sizeof buffer, number,
                                      isPlain ? std::chars_format::fixed : std::chars_format::scientific);
    return {buffer, result.ptr};
}

std::string jsonText(double number) {
    std::string text = shortestText(number);
    constexpr double firstBeyondIntegers = 9223372036854775808.0;
    if (std::fabs(number) >= firstBeyondIntegers && text.find('e') == std::string::npos) text += ".0";
    return text;
}

}  // namespace ostrel::detail
