#pragma once

#include "article/server/OstrelServer.h"
#include "serverframework/http/HttpTransfer.h"
#include "serverframework/media/BoundedCache.h"

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// The avatars of users, kept in memory by user id. A kept one is shown for a while without asking, then confirmed by its
/// entity tag (RFC 9110, section 13.1.2). Equal requests are joined. Main thread.
class FaceLoader final : public std::enable_shared_from_this<FaceLoader> {
public:
    struct Limits {
        std::size_t maximumFaceBytes = std::size_t{1024} * 1024;
        std::size_t maximumCacheBytes = std::size_t{8} * 1024 * 1024;
        /// For so long a face is taken as it is, and a user without one is not asked for again.
        double freshSeconds = 300;
        double missingSeconds = 60;
    };
    /// Asks the server; `done` is called once, on the main thread. The tag of the kept face goes along, or an empty one.
    using Fetch = std::function<void(const std::string& userId, const std::string& entityTag,
                                     std::function<void(HttpAnswer)> done)>;

    FaceLoader(Limits limits, Fetch fetch);
    /// Handlers that still wait are called in a later turn, with null data.
    ~FaceLoader();

    /// `handler` is called once, now or later; with null data for anything but a decimal user id.
    void load(const std::string& userId, FaceHandler handler);

private:
    struct Face {
        /// Null: the server has none.
        Data image;
        std::string entityTag;
        double askedAt = 0;
    };
    void answered(const std::string& userId, HttpAnswer answer);

    const Limits limits_;
    const Fetch fetch_;
    BoundedCache<Face> cache_;
    std::map<std::string, std::vector<FaceHandler>> waiting_;
};

}  // namespace ostrel
