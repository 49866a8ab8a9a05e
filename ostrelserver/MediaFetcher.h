#pragma once

#include "article/server/OstrelRequestManager.h"
#include "ostrelserver/BoundedCache.h"
#include "ostrelserver/HttpTransport.h"

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace ostrel {

/// Fetches media by absolute address, with a bounded memory cache. Equal requests are joined. No cookies are sent: an
/// address in a record may lead anywhere.
class MediaFetcher final : public OstrelRequestManager, public std::enable_shared_from_this<MediaFetcher> {
public:
    struct Limits {
        std::size_t maximumMediumBytes = std::size_t{512} * 1024 * 1024;
        std::size_t maximumCacheBytes = std::size_t{32} * 1024 * 1024;
        /// Fewer than the connections to one host, so that media never hold up the other requests.
        int simultaneous = 4;
    };

    MediaFetcher(Limits limits, std::string userAgent, std::shared_ptr<HttpTransport> transport);
    /// Handlers that still wait are called in a later turn, with the error "cancelled".
    ~MediaFetcher() override;

    Data request(const std::string& url, Handler handler) override;

private:
    void startNext();
    void arrived(const std::string& url, HttpAnswer answer);
    static void deliver(std::vector<Handler> handlers, const Data& data,
                        const std::optional<std::string>& error);

    const Limits limits_;
    const std::string userAgent_;
    const std::shared_ptr<HttpTransport> transport_;

    std::mutex mutex_;
    BoundedCache<Data> cache_;                             // guarded by mutex_
    std::map<std::string, std::vector<Handler>> waiting_;  // guarded by mutex_
    std::deque<std::string> queue_;                        // guarded by mutex_
    int underWay_ = 0;                                     // guarded by mutex_
};

}  // namespace ostrel
