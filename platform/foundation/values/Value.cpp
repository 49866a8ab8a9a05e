#include "platform/foundation/values/Value.h"

#include "platform/foundation/values/JsonTape.h"
#include "platform/foundation/values/NumberText.h"
#include "platform/foundation/values/Text.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace ostrel {

using namespace detail;

namespace {

/// The position of a value in a document, without the reference count of a Value.
struct Place {
    const std::uint64_t* tape;
    const char* strings;
    std::size_t index;

    std::uint64_t word() const { return tape[index]; }
    TapeKind kind() const { return kindOf(word()); }
    std::size_t end() const { return endOfContainer(word()) - 1; }
    std::string_view string() const { return stringAt(strings, word()); }
    Place at(std::size_t other) const { return {tape, strings, other}; }
};

std::int64_t clampedInteger(double number) {
    if (number >= 9223372036854775808.0) return std::numeric_limits<std::int64_t>::max();
    if (number < -9223372036854775808.0) return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

std::string numberText(const Place& place) {
    switch (place.kind()) {
    case TapeKind::signedInteger: return std::to_string(numberAt<std::int64_t>(place.tape, place.index));
    case TapeKind::unsignedInteger: return std::to_string(numberAt<std::uint64_t>(place.tape, place.index));
    default: return shortestText(numberAt<double>(place.tape, place.index));
    }
}

void appendQuoted(std::string& out, std::string_view text) {
    static constexpr char hexadecimal[] = "0123456789abcdef";
    out += '"';
    while (!text.empty()) {
        const std::size_t valid = validUtf8Prefix(text);
        for (const char c : text.substr(0, valid)) {
            switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    out += "\\u00";
                    out += hexadecimal[c >> 4];
                    out += hexadecimal[c & 15];
                } else {
                    out += c;
                }
            }
        }
        text.remove_prefix(valid);
        if (!text.empty()) {
            out += "\xEF\xBF\xBD";  // U+FFFD for each invalid byte, because JSON text has to be UTF-8
            text.remove_prefix(1);
        }
    }
    out += '"';
}

void appendJson(std::string& out, const Place& place) {
    switch (place.kind()) {
    case TapeKind::string: appendQuoted(out, place.string()); return;
    case TapeKind::isTrue: out += "true"; return;
    case TapeKind::isFalse: out += "false"; return;
    case TapeKind::null: out += "null"; return;
    case TapeKind::array:
        out += '[';
        for (std::size_t index = place.index + 1; index < place.end(); index = indexAfter(place.tape, index)) {
            if (index > place.index + 1) out += ',';
            appendJson(out, place.at(index));
        }
        out += ']';
        return;
    case TapeKind::dictionary:
        out += '{';
        for (std::size_t key = place.index + 1; key < place.end(); key = indexAfter(place.tape, key + 1)) {
            if (key > place.index + 1) out += ',';
            appendQuoted(out, place.at(key).string());
            out += ':';
            appendJson(out, place.at(key + 1));
        }
        out += '}';
        return;
    case TapeKind::real: out += jsonText(numberAt<double>(place.tape, place.index)); return;
    default: out += numberText(place);
    }
}

using Member = std::pair<std::string_view, std::size_t>;

/// The members of a dictionary sorted by key; of equal keys only the first member.
std::vector<Member> sortedMembers(const Place& place) {
    std::vector<Member> members;
    members.reserve(countOfContainer(place.word()));
    for (std::size_t key = place.index + 1; key < place.end(); key = indexAfter(place.tape, key + 1)) {
        members.emplace_back(place.at(key).string(), key + 1);
    }
    // Positions grow in document order: sorted by key and position, the first of equal keys comes first.
    std::sort(members.begin(), members.end());
    const auto sameKey = [](const Member& a, const Member& b) { return a.first == b.first; };
    members.erase(std::unique(members.begin(), members.end(), sameKey), members.end());
    return members;
}

bool isNumberKind(TapeKind kind) {
    return kind == TapeKind::signedInteger || kind == TapeKind::unsignedInteger || kind == TapeKind::real;
}

/// Compares exactly, whereas a comparison of doubles would find 2^53 and 2^53 + 1 equal.
bool equalNumbers(const Place& a, const Place& b) {
    if (a.kind() == TapeKind::real || b.kind() == TapeKind::real) {
        if (a.kind() == b.kind()) return numberAt<double>(a.tape, a.index) == numberAt<double>(b.tape, b.index);
        const Place& whole = a.kind() == TapeKind::real ? b : a;
        const Place& real = a.kind() == TapeKind::real ? a : b;
        const auto number = numberAt<double>(real.tape, real.index);
        if (number != std::trunc(number)) return false;
        if (whole.kind() == TapeKind::signedInteger) {
            return number >= -9223372036854775808.0 && number < 9223372036854775808.0 &&
                   static_cast<std::int64_t>(number) == numberAt<std::int64_t>(whole.tape, whole.index);
        }
        return number >= 0 && number < 18446744073709551616.0 &&
               static_cast<std::uint64_t>(number) == numberAt<std::uint64_t>(whole.tape, whole.index);
    }
    // The tape has an unsigned integer only when a signed integer cannot hold the number.
    return a.kind() == b.kind() && a.tape[a.index + 1] == b.tape[b.index + 1];
}

bool equal(const Place& a, const Place& b) {
    if (a.tape == b.tape && a.index == b.index) return true;
    if (isNumberKind(a.kind()) && isNumberKind(b.kind())) return equalNumbers(a, b);
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
    case TapeKind::string: return a.string() == b.string();
    case TapeKind::array: {
        std::size_t indexA = a.index + 1;
        std::size_t indexB = b.index + 1;
        while (indexA < a.end() && indexB < b.end()) {
            if (!equal(a.at(indexA), b.at(indexB))) return false;
            indexA = indexAfter(a.tape, indexA);
            indexB = indexAfter(b.tape, indexB);
        }
        return indexA == a.end() && indexB == b.end();
    }
    case TapeKind::dictionary: {
        const std::vector<Member> membersA = sortedMembers(a);
        const std::vector<Member> membersB = sortedMembers(b);
        return std::equal(membersA.begin(), membersA.end(), membersB.begin(), membersB.end(),
                          [&](const Member& one, const Member& other) {
                              return one.first == other.first && equal(a.at(one.second), b.at(other.second));
                          });
    }
    default: return true;
    }
}

Place placeOf(const JsonDocument& document, std::size_t index) { return {document.tape(), document.strings(), index}; }

}  // namespace

Value Value::parse(std::string_view json, std::string* error) {
    auto document = JsonDocument::parse(json, error);
    return document ? Value(std::move(document), rootValueIndex) : Value();
}

Value Value::ofString(std::string_view text) {
    if (text.size() > JsonDocument::maximumBytes) return {};
    const auto length = static_cast<std::uint32_t>(text.size());
    const std::size_t stringsLength = sizeof length + text.size() + 1;
    JsonDocument::Strings strings(static_cast<char*>(std::malloc(stringsLength)));
    if (!strings) return {};
    std::memcpy(strings.get(), &length, sizeof length);
    std::copy_n(text.data(), text.size(), strings.get() + sizeof length);
    strings[stringsLength - 1] = 0;
    constexpr std::size_t tapeLength = 3;
    auto tape = std::make_unique_for_overwrite<std::uint64_t[]>(tapeLength);
    tape[0] = tapeWord(TapeKind::root, tapeLength);
    tape[1] = tapeWord(TapeKind::string, 0);
    tape[2] = tapeWord(TapeKind::root, 0);
    return {std::make_shared<const JsonDocument>(std::move(tape), tapeLength, std::move(strings), stringsLength),
            rootValueIndex};
}

Value::Type Value::type() const {
    if (!document_) return Type::absent;
    switch (kindOf(document_->tape()[index_])) {
    case TapeKind::string: return Type::string;
    case TapeKind::array: return Type::array;
    case TapeKind::dictionary: return Type::dictionary;
    case TapeKind::isTrue:
    case TapeKind::isFalse: return Type::boolean;
    case TapeKind::null: return Type::null;
    default: return Type::number;
    }
}

std::string_view Value::string() const {
    return isString() ? stringAt(document_->strings(), document_->tape()[index_]) : std::string_view();
}

std::optional<std::string> Value::text() const {
    switch (type()) {
    case Type::string: return std::string(string());
    case Type::number: return numberText(placeOf(*document_, index_));
    case Type::boolean: return boolean() ? "1" : "0";
    default: return std::nullopt;
    }
}

std::int64_t Value::integer() const {
    switch (type()) {
    case Type::string: return leadingInteger(string());
    case Type::boolean: return boolean() ? 1 : 0;
    case Type::number: break;
    default: return 0;
    }
    const std::uint64_t* tape = document_->tape();
    switch (kindOf(tape[index_])) {
    case TapeKind::signedInteger: return numberAt<std::int64_t>(tape, index_);
    case TapeKind::unsignedInteger: return std::numeric_limits<std::int64_t>::max();
    default: return clampedInteger(numberAt<double>(tape, index_));
    }
}

double Value::number() const {
    switch (type()) {
    case Type::string: return leadingNumber(string());
    case Type::boolean: return boolean() ? 1 : 0;
    case Type::number: break;
    default: return 0;
    }
    const std::uint64_t* tape = document_->tape();
    switch (kindOf(tape[index_])) {
    case TapeKind::signedInteger: return static_cast<double>(numberAt<std::int64_t>(tape, index_));
    case TapeKind::unsignedInteger: return static_cast<double>(numberAt<std::uint64_t>(tape, index_));
    default: return numberAt<double>(tape, index_);
    }
}

bool Value::boolean() const {
    if (type() == Type::boolean) return kindOf(document_->tape()[index_]) == TapeKind::isTrue;
    return number() != 0;
}

std::size_t Value::count() const {
    if (!isArray() && !isDictionary()) return 0;
    const Place place = placeOf(*document_, index_);
    const std::size_t stored = countOfContainer(place.word());
    if (stored < saturatedCount) return stored;
    std::size_t counted = 0;
    const std::size_t keyLength = isDictionary() ? 1 : 0;
    for (std::size_t index = index_ + 1; index < place.end(); index = indexAfter(place.tape, index + keyLength)) {
        ++counted;
    }
    return counted;
}

std::vector<Value> Value::elements() const {
    std::vector<Value> elements;
    if (!isArray()) return elements;
    const Place place = placeOf(*document_, index_);
    elements.reserve(countOfContainer(place.word()));
    for (std::size_t index = index_ + 1; index < place.end(); index = indexAfter(place.tape, index)) {
        elements.push_back(Value(document_, index));
    }
    return elements;
}

Value Value::operator[](std::string_view key) const {
    if (!isDictionary()) return {};
    const Place place = placeOf(*document_, index_);
    for (std::size_t index = index_ + 1; index < place.end(); index = indexAfter(place.tape, index + 1)) {
        if (place.at(index).string() == key) return {document_, index + 1};
    }
    return {};
}

std::vector<std::string_view> Value::keys() const {
    std::vector<std::string_view> keys;
    if (!isDictionary()) return keys;
    const Place place = placeOf(*document_, index_);
    keys.reserve(countOfContainer(place.word()));
    for (std::size_t index = index_ + 1; index < place.end(); index = indexAfter(place.tape, index + 1)) {
        keys.push_back(place.at(index).string());
    }
    return keys;
}

std::string Value::json() const {
    std::string out;
    if (document_) appendJson(out, placeOf(*document_, index_));
    return out;
}

bool operator==(const Value& a, const Value& b) {
    if (a.isAbsent() || b.isAbsent()) return a.isAbsent() && b.isAbsent();
    return equal(placeOf(*a.document_, a.index_), placeOf(*b.document_, b.index_));
}

std::size_t Value::documentBytes() const { return document_ ? document_->bytes() : 0; }

}  // namespace ostrel
