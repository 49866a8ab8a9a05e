#pragma once

#include "platform/foundation/values/JsonDocument.h"

#include <cstring>

namespace ostrel::detail {

/// simdjson's tape (doc/tape.md of simdjson 3): a word holds its kind in the upper 8 bits and a payload
/// below. The root value is at index 1. An integer or double takes a second word for its bits.
enum class TapeKind : unsigned char {
    root = 'r',
    dictionary = '{',
    dictionaryEnd = '}',
    array = '[',
    arrayEnd = ']',
    string = '"',
    signedInteger = 'l',
    unsignedInteger = 'u',
    real = 'd',
    isTrue = 't',
    isFalse = 'f',
    null = 'n',
};

inline constexpr std::size_t rootValueIndex = 1;
inline constexpr std::uint64_t payloadMask = (std::uint64_t{1} << 56) - 1;
/// The largest count that a container's word can hold; the members of a larger container have to be counted.
inline constexpr std::size_t saturatedCount = 0xFFFFFF;

inline constexpr std::uint64_t tapeWord(TapeKind kind, std::uint64_t payload) {
    return (std::uint64_t{static_cast<unsigned char>(kind)} << 56) | payload;
}
inline TapeKind kindOf(std::uint64_t word) { return static_cast<TapeKind>(word >> 56); }
/// The index after the end of a container.
inline std::size_t endOfContainer(std::uint64_t word) { return static_cast<std::uint32_t>(word); }
inline std::size_t countOfContainer(std::uint64_t word) { return (word >> 32) & saturatedCount; }

/// The index after the value at `index`.
inline std::size_t indexAfter(const std::uint64_t* tape, std::size_t index) {
    switch (kindOf(tape[index])) {
    case TapeKind::dictionary:
    case TapeKind::array: return endOfContainer(tape[index]);
    case TapeKind::signedInteger:
    case TapeKind::unsignedInteger:
    case TapeKind::real: return index + 2;
    default: return index + 1;
    }
}

/// In the string buffer a string is its length in 32 bits, its bytes and a NUL.
inline std::string_view stringAt(const char* strings, std::uint64_t word) {
    const char* entry = strings + (word & payloadMask);
    std::uint32_t length;
    std::memcpy(&length, entry, sizeof length);
    return {entry + sizeof length, length};
}

template <class Number>
Number numberAt(const std::uint64_t* tape, std::size_t index) {
    static_assert(sizeof(Number) == sizeof(std::uint64_t));
    Number number;
    std::memcpy(&number, &tape[index + 1], sizeof number);
    return number;
}

}  // namespace ostrel::detail
