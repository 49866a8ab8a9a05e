#pragma once

#include "serverframework/http/HttpTransfer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ostrel {

/// What a cache knows about a medium besides its bytes: how to ask the server whether the medium has changed, and until
/// when there is no need to ask.
struct MediumFacts {
    /// The headers ETag and Last-Modified, unchanged; empty when the server sent none.
    std::string entityTag;
    std::string lastModified;
    /// Seconds since 1970, UTC.
    std::int64_t freshUntil = 0;
    /// A medium that is no longer fresh must not be shown before the server has confirmed it.
    bool mustRevalidate = false;

    bool isFreshAt(std::int64_t now) const { return now < freshUntil; }
};

/// The facts of an answer with the status 200 or 304 that arrived at `now` (seconds since 1970), by the rules for a
/// cache of one user (RFC 9111, sections 3 and 4.2, within `FreshnessLimits`). Absent when the answer must not be kept.
/// When the server says nothing, an answer is fresh for a tenth of the medium's age.
std::optional<MediumFacts> mediumFactsOf(const HttpAnswer& answer, std::int64_t now);

}  // namespace ostrel
