#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// An address (RFC 3986). Immutable value.
class NSURL final {
public:
    NSURL() = default;
    /// The address as text, taken as it stands.
    explicit NSURL(std::string absoluteString) : text_(std::move(absoluteString)) {}
    /// "file://" and the path, percent-encoded; a relative path is taken from the current folder. An empty path gives an
    /// empty address.
    static NSURL fileURLWithPath(const std::string& path);

    const std::string& absoluteString() const { return text_; }
    bool isEmpty() const { return text_.empty(); }
    bool isFileURL() const;
    /// Percent-decoded, without query and fragment. Of a file address: the path of the file (RFC 8089).
    std::string path() const;
    /// The part of the path after its last "/", trailing ones left out; empty for an empty path.
    std::string lastPathComponent() const;

    friend bool operator==(const NSURL&, const NSURL&) = default;

private:
    std::string text_;
};

}  // namespace ostrel
