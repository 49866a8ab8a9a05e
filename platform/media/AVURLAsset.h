#pragma once

#include <string>
#include <utility>

namespace ostrel {

/// A media file or stream by its address. Immutable; any thread.
class AVURLAsset final {
public:
    /// `url`: absolute, "file", "http" or "https".
    explicit AVURLAsset(std::string url) : url_(std::move(url)) {}
    const std::string& url() const { return url_; }

private:
    std::string url_;
};

}  // namespace ostrel
