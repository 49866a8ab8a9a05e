#pragma once

#include "serverframework/http/HttpTransfer.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ostrel {

/// What is known of a kept medium besides its bytes: how to ask whether it still holds, and until when there is no need.
struct MediumFacts {
    /// As the server gave them; empty when it gave none.
    std::string entityTag;
    std::string lastModified;
    /// Seconds since 1970, UTC.
    std::int64_t freshUntil = 0;
    /// It must not be shown before the server has confirmed it, once it is no longer fresh.
    bool mustRevalidate = false;

    bool isFreshAt(std::int64_t now) const { return now < freshUntil; }
};

/// The facts of an answer with the status 200 or 304 that came at `now`, by the rules for a cache of one user (RFC 9111,
/// sections 3 and 4.2). None when it must not be kept. Without a word of the server an answer is fresh for a tenth of
/// its age, at least 5 minutes and at most a day. Nothing is fresh for longer than a year.
std::optional<MediumFacts> factsOf(const HttpAnswer& answer, std::int64_t now);

}  // namespace ostrel
