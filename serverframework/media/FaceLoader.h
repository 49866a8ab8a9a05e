#pragma once

#include "article/server/OstrelServer.h"
#include "platform/foundation/values/LeastRecentlyUsedCache.h"
#include "serverframework/http/ClientLimits.h"
#include "serverframework/http/HttpTransfer.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// Loads the avatars of users and keeps them in memory by user id. A kept avatar is shown for a while without asking
/// the server; after that the server confirms it by its entity tag (RFC 9110, section 13.1.2). Requests of one user's
/// avatar that overlap are joined. Main thread.
class FaceLoader final : public std::enable_shared_from_this<FaceLoader> {
public:
    using Limits = FaceLimits;
    /// Asks the server for a face. `entityTag` is that of the kept face, or empty. Calls `done` once, on the main
    /// thread.
    using Fetch = std::function<void(const std::string& userId, const std::string& entityTag,
                                     std::function<void(HttpAnswer)> done)>;

    FaceLoader(Limits limits, Fetch fetch);
    /// Handlers that still wait are called with null data in a later turn of the main run loop.
    ~FaceLoader();

    /// Calls `handler` once, before or after `load` returns. A user id that is not decimal gives null data.
    void load(const std::string& userId, FaceHandler handler);

private:
    struct Face {
        /// Null: the user has no face.
        Data image;
        std::string entityTag;
        /// When the server answered last, on the monotonic clock.
        double askedAt = 0;
    };
    void answered(const std::string& userId, HttpAnswer answer);

    const Limits limits_;
    const Fetch fetch_;
    LeastRecentlyUsedCache<std::string, Face> cache_;
    std::map<std::string, std::vector<FaceHandler>> waiting_;
};

}  // namespace ostrel
