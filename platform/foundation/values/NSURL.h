#pragma once

#include <string>
#include <string_view>

namespace ostrel {

/// An address (RFC 3986). Immutable value.
class NSURL final {
public:
    NSURL() = default;
    /// Takes the text of the address unchecked.
    explicit NSURL(std::string absoluteString) : text_(std::move(absoluteString)) {}
    /// "file://" and the percent-encoded path. A relative path starts at the current folder. An empty path
    /// gives an empty address.
    static NSURL fileURLWithPath(const std::string& path);

    const std::string& absoluteString() const { return text_; }
    bool isEmpty() const { return text_.empty(); }
    bool isFileURL() const;
    /// The percent-decoded path, without query and fragment; for a file address, the path of the file (RFC
    /// 8089).
    std::string path() const;
    /// The part of the path after its last "/", where trailing slashes do not count; empty for an empty path.
    std::string lastPathComponent() const;

    friend bool operator==(const NSURL&, const NSURL&) = default;

private:
    std::string text_;
};

}  // namespace ostrel
