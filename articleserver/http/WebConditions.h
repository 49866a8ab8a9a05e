#pragma once

#include "articleserver/common/ServerText.h"
#include "articleserver/http/WebMessage.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace articleserver {

/// The state of a file with which the conditions of a request (RFC 9110, 13.1) are compared. The entity tag
/// is a strong one.
struct WebValidators {
    std::string_view entityTag;
    ServerTime modified = 0;
};

enum class WebCondition {
    holds,        ///< the request is served
    notModified,  ///< 304
    fails,        ///< 412
};

/// Evaluates the conditions of a GET or HEAD in their order of precedence (RFC 9110, 13.2.2), except
/// If-Range. A condition whose date is not valid is ignored (RFC 9110, 13.1.3 and 13.1.4).
WebCondition conditionOf(const WebRequest& request, const WebValidators& validators);

/// The part of the file that the request asks for: the Range header, when If-Range allows it (RFC 9110,
/// 13.1.5 and 14.2), else the whole file. If-Range with a date allows the range when the date equals the
/// modification date and the modification is at least one second older than `now`.
WebRange wantedRange(const WebRequest& request, const WebValidators& validators, std::uint64_t size, ServerTime now);

/// Parses any of the three forms of an HTTP date (RFC 9110, 5.6.7) into seconds since 1970; absent when the
/// text is not a date.
std::optional<std::int64_t> httpDateSeconds(std::string_view text);

}  // namespace articleserver
