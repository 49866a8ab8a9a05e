#pragma once

#include "article/server/OstrelRequestManager.h"
#include "platform/foundation/values/LeastRecentlyUsedCache.h"
#include "serverframework/http/ClientLimits.h"
#include "serverframework/http/HttpTransport.h"
#include "serverframework/http/SerialWorker.h"
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

/// Fetches media by absolute address, with a memory cache over a disk cache, both bounded. A kept medium is returned at
/// once, even when it is no longer fresh; the server is then asked whether the medium has changed (entity tag or
/// modification date, RFC 9110, section 13), and the handler gets the current medium. A kept medium stays valid when
/// the server fails or cannot be reached, but not when the server says that the medium is gone. Requests of one address
/// that overlap are joined, and the address that was requested last is fetched first. No cookies are sent, because an
/// address in a record may lead to any server.
class MediaFetcher final : public OstrelRequestManager, public std::enable_shared_from_this<MediaFetcher> {
public:
    using Limits = MediaLimits;

    /// Without `disk`, which may be null, media are kept in memory only.
    MediaFetcher(Limits limits, std::string userAgent, std::shared_ptr<HttpTransport> transport,
                 std::unique_ptr<MediaDiskCache> disk);
    /// The transport must have stopped. Handlers that still wait get the error "cancelled" in a later turn.
    ~MediaFetcher() override;

    Data request(const std::string& url, Handler handler) override;
    void cancel(const std::string& url) override;

private:
    using Handlers = std::vector<Handler>;
    using Medium = MediaDiskCache::Medium;
    /// The requests of one address that wait for the same answer.
    struct Fetch {
        std::uint64_t number = 0;
        Handlers handlers;
        /// How many of the handlers' requests were cancelled.
        std::size_t takenBack = 0;
        /// The kept medium, which the server is asked to confirm.
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

    // Functions up to the next group require mutex_.
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
    Outcome judge(const std::string& url, const std::optional<Medium>& kept, const std::shared_ptr<MediumBody>& body,
                  const HttpAnswer& answer);
    void keep(const std::string& url, const Medium& medium, const std::shared_ptr<MediumBody>& body);
    void forget(const std::string& url);

    const Limits limits_;
    const std::string userAgent_;
    const std::shared_ptr<HttpTransport> transport_;
    const std::unique_ptr<MediaDiskCache> disk_;

    std::mutex mutex_;
    // All up to the worker are guarded by mutex_.
    LeastRecentlyUsedCache<std::string, Medium> memory_;
    std::map<std::string, Fetch> fetches_;
    MediaQueue queue_;
    /// The moments at which the transfers began, by the numbers of their fetches.
    std::map<std::uint64_t, double> underWay_;
    /// How many removals of an address wait for the worker; its file is not looked at until then.
    std::map<std::string, int> beingRemoved_;
    std::uint64_t lastNumber_ = 0;
    /// True while a timer of the main run loop is set that starts the next fetch.
    bool wakes_ = false;

    /// Writes to the disk and checks large files. Declared last, because its tasks use the other members.
    SerialWorker worker_;
};

}  // namespace ostrel
