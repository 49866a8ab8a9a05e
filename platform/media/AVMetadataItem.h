#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace ostrel {

inline constexpr std::string_view AVMetadataCommonKeyCreationDate = "creationDate";
inline constexpr std::string_view AVMetadataCommonKeyLocation = "location";
inline constexpr std::string_view AVMetadataCommonKeyModel = "model";
inline constexpr std::string_view AVMetadataCommonKeySoftware = "software";

/// One item of a media file's metadata, under a key common to all container formats.
struct AVMetadataItem {
    /// One of the keys above, or another text; empty for an item without a common key.
    std::string commonKey;
    std::variant<std::monostate, std::string, NSDate> value;

    /// The value if it is a date.
    std::optional<NSDate> dateValue() const {
        const auto* date = std::get_if<NSDate>(&value);
        return date ? std::optional(*date) : std::nullopt;
    }
    /// The value if it is a text.
    std::optional<std::string> stringValue() const {
        const auto* text = std::get_if<std::string>(&value);
        return text ? std::optional(*text) : std::nullopt;
    }
};

}  // namespace ostrel
