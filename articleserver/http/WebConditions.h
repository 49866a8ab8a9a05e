#pragma once

#include "articleserver/common/ServerText.h"
#include "articleserver/http/WebMessage.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace articleserver {

/// What a request's conditions (RFC 9110, 13.1) are held against. The entity tag is a strong one.
struct WebValidators {
    std::string_view entityTag;
    ServerTime modified = 0;
};

enum class WebCondition {
    holds,        ///< go on
    notModified,  ///< 304
    fails,        ///< 412
};

/// The conditions of a GET or HEAD in their order of precedence (RFC 9110, 13.2.2), all but If-Range. Dates that cannot
/// be read are ignored, as the standard has it.
WebCondition conditionOf(const WebRequest& request, const WebValidators& validators);

/// The part of the content that is wanted: Range, where If-Range lets it count (RFC 9110, 13.1.5 and 14.2). A date
/// counts when it is the modification date exactly and that was at least a second before `now`.
WebRange wantedRange(const WebRequest& request, const WebValidators& validators, std::uint64_t size,
                     ServerTime now);

/// Any of the three forms of a date (RFC 9110, 5.6.7) in seconds since 1970; absent when it is none.
std::optional<std::int64_t> httpDateSeconds(std::string_view text);

}  // namespace articleserver
