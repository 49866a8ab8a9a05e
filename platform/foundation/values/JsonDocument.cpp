#include "platform/foundation/values/JsonDocument.h"

#include "platform/foundation/values/JsonTape.h"
#include "platform/foundation/values/NumberText.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <new>

namespace ostrel {

using namespace detail;

namespace {

// Bytes of JSON. A parser keeps about 15 times the longest text it has read. Each thread keeps one parser for
// texts up to this length; a longer text gets a parser of its own, so that a thread never keeps more than 4
// MiB.
constexpr std::size_t keptParserText = 256 * 1024;
constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";

bool isBeyondRange(std::string_view number) {
    if (number.find_first_of(".eE") != std::string_view::npos) return std::isinf(doubleOfText(number));
    const char* end = number.data() + number.size();
    std::int64_t whole;
    std::uint64_t positive;
    return std::from_chars(number.data(), end, whole).ec == std::errc::result_out_of_range &&
           std::from_chars(number.data(), end, positive).ec != std::errc();
}

/// A copy of `json` with quotes around each number that neither a 64-bit integer nor a double can hold; empty
/// when there is no such number.
std::string withLargeNumbersQuoted(std::string_view json) {
    std::string quoted;
    std::size_t copied = 0;
    for (std::size_t position = 0; position < json.size();) {
        const char c = json[position];
        if (c == '"') {
            for (++position; position < json.size() && json[position] != '"'; ++position) {
                if (json[position] == '\\') ++position;
            }
            ++position;
        } else if (c == '-' || (c >= '0' && c <= '9')) {
            const std::size_t end = std::min(json.find_first_not_of("+-.0123456789eE", position), json.size());
            const std::string_view number = json.substr(position, end - position);
            const std::size_t next = json.find_first_not_of(" \t\r\n", end);
            const bool isKey = next != std::string_view::npos && json[next] == ':';
            if (!isKey && isJsonNumber(number) && isBeyondRange(number)) {
                quoted.append(json.substr(copied, position - copied)).append(1, '"').append(number).append(1, '"');
                copied = end;
            }
            position = end;
        } else {
            ++position;
        }
    }
    if (copied > 0) quoted.append(json.substr(copied));
    return quoted;
}

std::string sentenceFor(simdjson::error_code code) {
    switch (code) {
    case simdjson::EMPTY: return "The text is empty.";
    case simdjson::CAPACITY: return "The text is too long.";
    case simdjson::MEMALLOC: return "There is not enough memory to parse the text.";
    case simdjson::DEPTH_ERROR:
        return "The text nests deeper than " + std::to_string(JsonDocument::maximumDepth) + " levels.";
    case simdjson::UTF8_ERROR: return "The text is not valid UTF-8.";
    case simdjson::UNCLOSED_STRING: return "A string of the text does not end.";
    case simdjson::UNESCAPED_CHARS: return "A string of the text holds an unescaped control character.";
    case simdjson::STRING_ERROR: return "A string of the text holds a wrong escape.";
    case simdjson::NUMBER_ERROR: return "A number of the text is malformed.";
    case simdjson::T_ATOM_ERROR:
    case simdjson::F_ATOM_ERROR:
    case simdjson::N_ATOM_ERROR: return "A word of the text is neither true, false nor null.";
    case simdjson::TAPE_ERROR: return "The text is malformed JSON: it is cut short or wrongly put together.";
    default: return std::string("The text is malformed JSON: ") + simdjson::error_message(code);
    }
}

/// The used bytes of the string buffer, where the strings follow each other in the order of the tape.
std::size_t usedStringBytes(const std::uint64_t* tape, std::size_t length, const char* strings) {
    std::uint64_t last = 0;
    bool hasString = false;
    for (std::size_t index = rootValueIndex; index < length;) {
        switch (kindOf(tape[index])) {
        case TapeKind::string:
            last = tape[index];
            hasString = true;
            ++index;
            break;
        case TapeKind::signedInteger:
        case TapeKind::unsignedInteger:
        case TapeKind::real: index += 2; break;
        default: ++index;
        }
    }
    if (!hasString) return 0;
    const std::string_view text = stringAt(strings, last);
    return static_cast<std::size_t>(text.data() - strings) + text.size() + 1;
}

JsonDocument::Strings allocateStrings(std::size_t length) {
    auto* bytes = static_cast<char*>(std::malloc(std::max<std::size_t>(length, 1)));
    if (!bytes) throw std::bad_alloc();
    return JsonDocument::Strings(bytes);
}

/// A document of exactly the size needed, with a copy of the tape. `makeStrings` gets the number of used
/// bytes of the string buffer and returns the strings.
template <class MakeStrings>
std::shared_ptr<const JsonDocument> exactDocument(const simdjson::dom::document& parsed, MakeStrings makeStrings) {
    const std::uint64_t* tape = parsed.tape.get();
    const std::size_t tapeLength = tape[0] & payloadMask;
    const std::size_t stringsLength =
        usedStringBytes(tape, tapeLength, reinterpret_cast<const char*>(parsed.string_buf.get()));
    auto tapeCopy = std::make_unique_for_overwrite<std::uint64_t[]>(tapeLength);
    std::copy_n(tape, tapeLength, tapeCopy.get());
    return std::make_shared<const JsonDocument>(std::move(tapeCopy), tapeLength, makeStrings(stringsLength),
                                                stringsLength);
}

simdjson::error_code parseInto(simdjson::dom::parser& parser, simdjson::dom::document& document,
                               std::string_view json) {
    if (parser.capacity() < json.size()) {
        const simdjson::error_code code = parser.allocate(json.size(), JsonDocument::maximumDepth);
        if (code != simdjson::SUCCESS) return code;
    }
    return parser.parse_into_document(document, json.data(), json.size()).error();
}

std::shared_ptr<const JsonDocument> parseShort(std::string_view json, simdjson::error_code& code) {
    thread_local simdjson::dom::parser parser(keptParserText);
    code = parseInto(parser, parser.doc, json);
    if (code != simdjson::SUCCESS) return nullptr;
    return exactDocument(parser.doc, [](std::size_t length) {
        auto strings = allocateStrings(length);
        std::memcpy(strings.get(), parser.doc.string_buf.get(), length);
        return strings;
    });
}

/// Parses a long text without copying its strings: simdjson writes them into a buffer that is cut to size and
/// becomes the document's own.
std::shared_ptr<const JsonDocument> parseLong(std::string_view json, simdjson::error_code& code) {
    simdjson::dom::parser parser(JsonDocument::maximumBytes);
    struct Borrowing final : simdjson::dom::document {
        ~Borrowing() { string_buf.release(); }
    } document;
    // The worst case is an empty string with its comma: 3 bytes of JSON, 5 bytes in the buffer.
    auto strings = allocateStrings(5 * json.size() / 3 + simdjson::SIMDJSON_PADDING + 64);
    code = document.allocate(json.size());
    if (code != simdjson::SUCCESS) return nullptr;
    document.string_buf.reset(reinterpret_cast<std::uint8_t*>(strings.get()));
    code = parseInto(parser, document, json);
    if (code != simdjson::SUCCESS) return nullptr;
    return exactDocument(document, [&](std::size_t length) {
        if (void* cut = std::realloc(strings.get(), std::max<std::size_t>(length, 1))) {
            static_cast<void>(strings.release());
            strings.reset(static_cast<char*>(cut));
        }
        return std::move(strings);
    });
}

std::shared_ptr<const JsonDocument> parseText(std::string_view json, simdjson::error_code& code) {
    try {
        return json.size() <= keptParserText ? parseShort(json, code) : parseLong(json, code);
    } catch (const std::bad_alloc&) {
        code = simdjson::MEMALLOC;
        return nullptr;
    }
}

}  // namespace

std::shared_ptr<const JsonDocument> JsonDocument::parse(std::string_view json, std::string* error) {
    if (json.size() > maximumBytes) {
        if (error) *error = "The text is longer than " + std::to_string(maximumBytes) + " bytes.";
        return nullptr;
    }
    if (json.starts_with(byteOrderMark)) json.remove_prefix(byteOrderMark.size());
    simdjson::error_code code = simdjson::EMPTY;
    std::shared_ptr<const JsonDocument> document;
    if (!json.empty()) document = parseText(json, code);
    if (code == simdjson::NUMBER_ERROR) {
        const std::string quoted = withLargeNumbersQuoted(json);
        if (!quoted.empty()) document = parseText(quoted, code);
    }
    if (!document && error) *error = sentenceFor(code);
    return document;
}

JsonDocument::JsonDocument(std::unique_ptr<std::uint64_t[]> tape, std::size_t tapeLength, Strings strings,
                           std::size_t stringsLength)
    : tape_(std::move(tape)), tapeLength_(tapeLength), strings_(std::move(strings)), stringsLength_(stringsLength) {}

}  // namespace ostrel
