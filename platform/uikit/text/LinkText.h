#pragma once

#include "platform/graphics/UIFont.h"

#include <string>
#include <string_view>

namespace ostrel {

/// The parts of an address for display. The host stands apart, so that user information or a path cannot pass
/// for it.
struct LinkText {
    std::string host;    ///< with the port, without user information; the whole address when it has no host
    std::string path;    ///< path, query and fragment; may be empty
    bool isWeb = false;  ///< whether the address is http or https with a host
};

/// The parts of `address` (RFC 3986, section 3).
LinkText linkText(std::string_view address);

/// The mailto address (RFC 6068) of a mail with `body` and without a recipient.
std::string mailAddress(std::string_view body);

/// `text` when it fits into `width` points on one line, else its beginning and end with an ellipsis between
/// them.
std::string truncatedInMiddle(const std::string& text, const UIFont& font, CGFloat width);

}  // namespace ostrel
