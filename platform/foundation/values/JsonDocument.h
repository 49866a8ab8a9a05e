#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

namespace ostrel {

class Value;

/// The parsed form of one JSON text: a tape of 64-bit words and a buffer of unescaped strings, both of
/// exactly the size they need. Immutable after parsing, shared by all values that point into it.
class JsonDocument final {
public:
    /// Levels; deeper nesting is rejected.
    static constexpr std::size_t maximumDepth = 512;
    /// Bytes; longer texts are rejected.
    static constexpr std::size_t maximumBytes = std::size_t{256} * 1024 * 1024;

    /// Parses `json` (UTF-8). Null with a sentence in `error` when the text is not valid. A number that
    /// neither a 64-bit integer nor a double can hold becomes a string with its decimal text. Any thread.
    static std::shared_ptr<const JsonDocument> parse(std::string_view json, std::string* error);

    std::size_t bytes() const { return tapeLength_ * sizeof(std::uint64_t) + stringsLength_ + sizeof(*this); }
    const std::uint64_t* tape() const { return tape_.get(); }
    std::size_t tapeLength() const { return tapeLength_; }
    const char* strings() const { return strings_.get(); }
    std::size_t stringsLength() const { return stringsLength_; }

    /// The buffers are from malloc, so that realloc can cut them to size in place.
    struct Free {
        void operator()(char* bytes) const { std::free(bytes); }
    };
    using Strings = std::unique_ptr<char[], Free>;

    JsonDocument(std::unique_ptr<std::uint64_t[]> tape, std::size_t tapeLength, Strings strings,
                 std::size_t stringsLength);

private:
    std::unique_ptr<std::uint64_t[]> tape_;
    std::size_t tapeLength_;
    Strings strings_;
    std::size_t stringsLength_;
};

}  // namespace ostrel
