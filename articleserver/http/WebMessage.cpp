#include "articleserver/http/WebMessage.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/http/MultipartReader.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <limits>

namespace articleserver {

namespace {

ServerFailure badInput(std::string text) { return {ServerFault::badInput, std::move(text)}; }

std::string_view trimmedBlanks(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

/// Calls `visit` with each piece of the text between separators.
template <typename Visit>
void eachPiece(std::string_view text, char separator, Visit visit) {
    for (;;) {
        std::size_t end = text.find(separator);
        visit(text.substr(0, end));
        if (end == std::string_view::npos) return;
        text.remove_prefix(end + 1);
    }
}

char lowered(char character) {
    return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a') : character;
}

bool startsWithFolded(std::string_view text, std::string_view lowerCasePrefix) {
    return text.size() >= lowerCasePrefix.size() &&
           std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(),
                      [](char wanted, char found) { return wanted == lowered(found); });
}

int hexDigit(char character) {
    if (character >= '0' && character <= '9') return character - '0';
    char lower = lowered(character);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string_view WebRequest::header(std::string_view lowerCaseName) const {
    auto found = headers.find(lowerCaseName);
    return found == headers.end() ? std::string_view() : std::string_view(found->second);
}

std::string_view WebRequest::cookie(std::string_view name) const {
    std::string_view value;
    eachPiece(header("cookie"), ';', [&](std::string_view pair) {
        pair = trimmedBlanks(pair);
        std::size_t equals = pair.find('=');
        if (value.empty() && equals != std::string_view::npos && pair.substr(0, equals) == name) {
            value = pair.substr(equals + 1);
        }
    });
    return value;
}

int httpStatus(ServerFault fault) {
    switch (fault) {
    case ServerFault::badInput: return 400;
    case ServerFault::signedOut: return 401;
    case ServerFault::forbidden: return 403;
    case ServerFault::notFound: return 404;
    case ServerFault::conflict: return 409;
    case ServerFault::tooLarge: return 413;
    case ServerFault::unsupported: return 415;
    case ServerFault::throttled: return 429;
    case ServerFault::internal: return 500;
    case ServerFault::busy: return 503;
    case ServerFault::storageFull: return 507;
    }
    return 500;
}

ServerResult<std::string> decodedPercent(std::string_view text, PlusSign plus) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '+' && plus == PlusSign::isSpace) {
            decoded += ' ';
        } else if (text[at] != '%') {
            decoded += text[at];
        } else {
            int high = at + 2 < text.size() ? hexDigit(text[at + 1]) : -1;
            int low = at + 2 < text.size() ? hexDigit(text[at + 2]) : -1;
            if (high < 0 || low < 0) return badInput("The request holds a broken percent escape.");
            decoded += static_cast<char>(high * 16 + low);
            at += 2;
        }
    }
    if (!isValidText(decoded)) return badInput("The request holds text that is not UTF-8.");
    return decoded;
}

ServerResult<WebFields> parseFields(std::string_view text) {
    WebFields fields;
    std::optional<ServerFailure> failure;
    std::size_t count = 0;
    eachPiece(text, '&', [&](std::string_view pair) {
        if (failure || pair.empty()) return;
        if (++count > ServerLimits::fields) {
            failure = badInput("The request has too many fields.");
            return;
        }
        std::size_t equals = std::min(pair.find('='), pair.size());
        auto name = decodedPercent(pair.substr(0, equals), PlusSign::isSpace);
        auto value = decodedPercent(pair.substr(std::min(equals + 1, pair.size())), PlusSign::isSpace);
        if (!name || !value) {
            failure = name ? value.failure() : name.failure();
        } else if (!fields.emplace(*name, *value).second) {
            failure = badInput("The request gives a field twice.");
        }
    });
    if (failure) return *failure;
    return fields;
}

std::optional<std::string> headerParameter(std::string_view header, std::string_view name) {
    std::size_t at = header.find(';');
    while (at != std::string_view::npos) {
        std::string_view rest = trimmedBlanks(header.substr(at + 1));
        std::size_t equals = rest.find('=');
        if (equals == std::string_view::npos) return std::nullopt;
        std::string_view key = trimmedBlanks(rest.substr(0, equals));
        rest = trimmedBlanks(rest.substr(equals + 1));
        std::string value;
        if (rest.starts_with('"')) {
            std::size_t end = 1;
            while (end < rest.size() && rest[end] != '"') {
                if (rest[end] == '\\' && end + 1 < rest.size()) ++end;
                value += rest[end++];
            }
            if (end >= rest.size()) return std::nullopt;
            rest.remove_prefix(end + 1);
        } else {
            value = trimmedBlanks(rest.substr(0, rest.find(';')));
        }
        if (key.size() == name.size() && startsWithFolded(key, name)) return value;
        std::size_t next = rest.find(';');
        if (next == std::string_view::npos) return std::nullopt;
        header = rest;
        at = next;
    }
    return std::nullopt;
}

namespace {

class PartCollector final : public MultipartSink {
public:
    ServerResult<void> beginPart(const std::string& name, bool) override {
        parts.push_back({name, {}});
        return {};
    }
    ServerResult<void> content(std::string_view bytes) override {
        parts.back().content.append(bytes);
        return {};
    }

    std::vector<MultipartPart> parts;
};

}  // namespace

ServerResult<std::vector<MultipartPart>> parseMultipart(std::string_view contentType, std::string_view body) {
    PartCollector collector;
    MultipartReader reader(contentType, collector);
    auto taken = reader.take(body);
    if (taken) taken = reader.finish();
    if (!taken) return taken.failure();
    return std::move(collector.parts);
}

namespace {

/// Parses a position of a range. A number above 2^63 - 1 becomes a position that no file reaches.
std::optional<std::uint64_t> rangePosition(std::string_view text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    auto position = decimalId(text);
    return position ? static_cast<std::uint64_t>(*position) : std::numeric_limits<std::uint64_t>::max() - 1;
}

}  // namespace

WebRange parseRange(std::string_view header, std::uint64_t size) {
    const WebRange whole{RangeKind::whole, 0, size};
    constexpr std::string_view unit = "bytes=";
    if (!startsWithFolded(header, unit)) return whole;
    std::string_view spec = trimmedBlanks(header.substr(unit.size()));
    std::size_t dash = spec.find('-');
    if (dash == std::string_view::npos || spec.find(',') != std::string_view::npos) return whole;

    std::string_view firstText = trimmedBlanks(spec.substr(0, dash));
    std::string_view lastText = trimmedBlanks(spec.substr(dash + 1));
    auto first = rangePosition(firstText);
    auto last = rangePosition(lastText);
    if (firstText.empty()) {
        if (!last) return whole;
        std::uint64_t suffix = std::min(*last, size);
        if (suffix == 0) return {RangeKind::unsatisfiable, 0, 0};
        return {RangeKind::part, size - suffix, suffix};
    }
    if (!first || (!lastText.empty() && !last) || (last && *last < *first)) return whole;
    if (*first >= size) return {RangeKind::unsatisfiable, 0, 0};
    std::uint64_t end = last ? std::min(*last, size - 1) : size - 1;
    return {RangeKind::part, *first, end - *first + 1};
}

bool isHostAndPort(std::string_view text) {
    if (text.empty() || text.size() > 255) return false;
    std::string_view host = text;
    std::size_t colon = text.rfind(':');
    bool isBracketed = text.front() == '[';
    if (colon != std::string_view::npos && (!isBracketed || text[colon - 1] == ']')) {
        auto port = decimalId(text.substr(colon + 1));
        if (!port || *port < 1 || *port > 65535) return false;
        host = text.substr(0, colon);
    }
    if (isBracketed) {
        return host.size() > 2 && host.back() == ']' &&
               host.substr(1, host.size() - 2).find_first_not_of("0123456789abcdefABCDEF:.") == std::string_view::npos;
    }
    return !host.empty() && std::all_of(host.begin(), host.end(), [](unsigned char character) {
        return std::isalnum(character) || character == '-' || character == '.';
    });
}

bool matchesEntityTag(std::string_view header, std::string_view tag) {
    bool matches = false;
    eachPiece(header, ',', [&](std::string_view candidate) {
        candidate = trimmedBlanks(candidate);
        if (candidate.starts_with("W/")) candidate.remove_prefix(2);
        if (candidate == "*" || candidate == tag) matches = true;
    });
    return matches;
}

}  // namespace articleserver
