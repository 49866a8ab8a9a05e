#pragma once

#include "platform/graphics/UIFont.h"

#include <string>
#include <string_view>

namespace ostrel {

/// An address as it is shown to a person: the host first, so that nothing before or after it can pass for it.
struct LinkText {
    std::string host;    ///< with the port, without user information; the whole address when it has none
    std::string path;    ///< path, query and fragment; may be empty
    bool isWeb = false;  ///< http or https with a host
};

/// The parts of `address` (RFC 3986, section 3).
LinkText linkText(std::string_view address);

/// A mail to nobody yet with `body` in it (RFC 6068).
std::string mailAddress(std::string_view body);

/// `text` when it fits `width` points on one line, else its beginning and end with an ellipsis between.
std::string truncatedInMiddle(const std::string& text, const UIFont& font, CGFloat width);

}  // namespace ostrel
