#pragma once

#include "article/server/OstrelRequestManager.h"
#include "serverframework/http/HttpTransport.h"
#include "serverframework/http/SerialWorker.h"
#include "serverframework/media/BoundedCache.h"
#include "serverframework/media/MediaDiskCache.h"
#include "serverframework/media/MediaQueue.h"
#include "serverframework/media/MediumBody.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// Fetches media by absolute address, with a memory cache over a disk cache, both bounded. What is kept is returned at
/// once, also when it is no longer fresh; then the server is asked whether it still holds (entity tag or modification
/// date, RFC 9110, section 13) and the handler gets what does. A server that fails or cannot be reached leaves what is
/// kept in force; one that says the medium is gone does not. Equal requests are joined. What was asked for last is
/// fetched first. No cookies are sent: an address in a record may lead anywhere.
class MediaFetcher final : public OstrelRequestManager, public std::enable_shared_from_this<MediaFetcher> {
public:
    struct Limits {
        std::size_t maximumMediumBytes = std::size_t{1024} * 1024 * 1024;
        std::size_t maximumCacheBytes = std::size_t{32} * 1024 * 1024;
        /// Fewer than the connections to one host, so that media never hold up the other requests.
        int simultaneous = 4;
        /// A fetch that has taken so long counts as slow; so many slow ones run beside the simultaneous ones, so that a
        /// few large or hanging media do not keep the others waiting.
        double slowSeconds = 3;
        int simultaneousSlow = 2;
        /// In bytes a second, over the transport's stall time-out.
        int minimumSpeed = 100;
        double maximumSeconds = 3600;
        MediumBody::Limits body;
    };

    /// `disk` may be null: then media are kept in memory only.
    MediaFetcher(Limits limits, std::string userAgent, std::shared_ptr<HttpTransport> transport,
                 std::unique_ptr<MediaDiskCache> disk);
    /// Handlers that still wait are called in a later turn, with the error "cancelled". The transport has stopped.
    ~MediaFetcher() override;

    Data request(const std::string& url, Handler handler) override;
    void cancel(const std::string& url) override;

private:
    using Handlers = std::vector<Handler>;
    using Medium = MediaDiskCache::Medium;
    /// Requests of one address that wait for the same answer.
    struct Fetch {
        std::uint64_t number = 0;
        Handlers handlers;
        std::size_t takenBack = 0;
        /// What is kept of it, to be confirmed.
        std::optional<Medium> kept;
        /// The transport's number; 0 until it is known.
        std::uint64_t transfer = 0;
    };
    struct Outcome {
        Data data;
        std::optional<std::string> error;
    };

    static Data shownAtOnce(const std::optional<Medium>& kept);
    static void deliver(Handlers handlers, const Data& data, const std::optional<std::string>& error);

    /// Guarded by mutex_, as are those below.
    std::optional<Data> join(const std::string& url, Handler& handler);
    void remember(const std::string& url, const Medium& medium);
    bool livesOnDisk(const Data& data) const;
    bool hasFreeLane();
    void wakeLater();

    void check(const std::string& url, std::uint64_t number);
    void startNext();
    HttpRequest requestFor(const std::string& url, const std::optional<Medium>& kept,
                           const std::shared_ptr<MediumBody>& body) const;
    void arrived(const std::string& url, std::uint64_t number, const std::shared_ptr<MediumBody>& body,
                 HttpAnswer answer);
    Outcome judge(const std::string& url, const std::optional<Medium>& kept,
                  const std::shared_ptr<MediumBody>& body, const HttpAnswer& answer);
    void keep(const std::string& url, const Medium& medium, const std::shared_ptr<MediumBody>& body);
    void forget(const std::string& url);

    const Limits limits_;
    const std::string userAgent_;
    const std::shared_ptr<HttpTransport> transport_;
    const std::unique_ptr<MediaDiskCache> disk_;

    std::mutex mutex_;
    BoundedCache<Medium> memory_;               // guarded by mutex_
    std::map<std::string, Fetch> fetches_;      // guarded by mutex_
    MediaQueue queue_;                          // guarded by mutex_
    std::map<std::uint64_t, double> underWay_;  // guarded by mutex_; the moment each began
    std::map<std::string, int> beingRemoved_;   // guarded by mutex_; removals that wait for the worker
    std::uint64_t lastNumber_ = 0;              // guarded by mutex_
    bool wakes_ = false;                        // guarded by mutex_

    /// Writes to the disk and checks large files. Its tasks use this object, so it ends first.
    SerialWorker worker_;
};

}  // namespace ostrel
