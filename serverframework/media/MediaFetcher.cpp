#include "serverframework/media/MediaFetcher.h"

#include "platform/foundation/runloop/Clock.h"
#include "platform/foundation/runloop/NSDate.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "serverframework/http/WebAddress.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

/// What a mapped medium costs in memory, in bytes: the tables of the mapping. The bytes themselves belong to the
/// system's file cache.
constexpr std::size_t costOfMapped = std::size_t{64} * 1024;

/// What keeping a medium costs in memory, in bytes.
std::size_t costOf(const std::string& url, std::size_t bytes) {
    constexpr std::size_t bookkeeping = 256;
    return bytes + url.size() + bookkeeping;
}

bool isOnThisMachine(const std::string& origin) {
    const std::size_t host = origin.find("://") + 3;
    return isLoopbackHost(std::string_view(origin).substr(host, origin.rfind(':') - host));
}

bool startsWith(std::string_view text, std::string_view lowerCasePrefix) {
    if (text.size() < lowerCasePrefix.size()) return false;
    return std::equal(lowerCasePrefix.begin(), lowerCasePrefix.end(), text.begin(), [](char wanted, char c) {
        return wanted == (c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c);
    });
}

/// The error of an answer; absent when the answer has the medium or confirms the kept one.
std::optional<std::string> errorOf(const HttpAnswer& answer, bool isConditional) {
    // The status counts even when the body of the refusal was too long to be read.
    if (answer.status >= 400 && !answer.cancelled) return statusSentence(answer);
    if (!answer.error.empty()) return answer.error;
    if (answer.status >= 300 && !(answer.status == 304 && isConditional)) return statusSentence(answer);
    // A gateway asks for a sign-in, or the address never led to a medium.
    if (startsWith(answer.contentType, "text/html") || startsWith(answer.contentType, "application/xhtml")) {
        return "The address leads to a web page, not to a picture or a video.";
    }
    return std::nullopt;
}

/// Whether a failed request says that the medium is gone, not only that the server is busy or failing.
bool saysItIsGone(const HttpAnswer& answer) {
    return !answer.cancelled && answer.status >= 400 && answer.status < 500 && answer.status != 408 &&
           answer.status != 429;
}

std::int64_t nowInSeconds() { return static_cast<std::int64_t>(NSDate::now().secondsSince1970); }

}  // namespace

MediaFetcher::MediaFetcher(Limits limits, std::string userAgent, std::shared_ptr<HttpTransport> transport,
                           std::unique_ptr<MediaDiskCache> disk)
    : limits_(limits),
      userAgent_(std::move(userAgent)),
      transport_(std::move(transport)),
      disk_(std::move(disk)),
      memory_({.totalCost = limits.maximumCacheBytes, .costOfOne = limits.maximumCacheBytes / 4}) {}

MediaFetcher::~MediaFetcher() {
    worker_.stop();
    for (auto& [url, fetch] : fetches_) deliver(std::move(fetch.handlers), Data(), std::string(cancelledText));
}

void MediaFetcher::deliver(Handlers handlers, const Data& data, const std::optional<std::string>& error) {
    if (!RunLoop::hasMain()) return;
    for (Handler& handler : handlers) {
        if (!handler) continue;
        RunLoop::main().perform(
            [handler = std::move(handler), data, error] { handler(data, !error.has_value(), error); });
    }
}

Data MediaFetcher::shownAtOnce(const std::optional<Medium>& kept) {
    return kept && !kept->facts.mustRevalidate ? kept->data : Data();
}

Data MediaFetcher::request(const std::string& url, Handler handler) {
    if (!originOfAddress(url)) {
        Handlers handlers;
        handlers.push_back(std::move(handler));
        deliver(std::move(handlers), Data(), "The address is not an http or https address.");
        return {};
    }
    MediaDiskCache::Lookup known;
    bool looksOnDisk = disk_ != nullptr;
    {
        const std::lock_guard lock(mutex_);
        if (const auto shown = join(url, handler)) return *shown;
        if (const Medium* medium = memory_.find(url)) known.medium = *medium;
        looksOnDisk &= !known.medium && !beingRemoved_.contains(url);
    }
    // The mutex is not locked here, because a file is read.
    if (looksOnDisk) known = disk_->find(url, MediaDiskCache::Checking::small);
    Data shown;
    {
        const std::lock_guard lock(mutex_);
        if (const auto joined = join(url, handler)) return *joined;
        if (known.medium) remember(url, *known.medium);
        Handlers handlers;
        handlers.push_back(std::move(handler));
        if (known.medium && known.medium->facts.isFreshAt(nowInSeconds())) {
            deliver(std::move(handlers), known.medium->data, std::nullopt);
            return known.medium->data;
        }
        Fetch& fetch = fetches_[url];
        fetch.number = ++lastNumber_;
        fetch.handlers = std::move(handlers);
        fetch.kept = known.medium;
        shown = shownAtOnce(fetch.kept);
        if (known.needsChecking) {
            worker_.post([this, url, number = fetch.number] { check(url, number); });
            return {};
        }
        queue_.add(url, Clock::shared().monotonicSeconds());
    }
    startNext();
    return shown;
}

std::optional<Data> MediaFetcher::join(const std::string& url, Handler& handler) {
    const auto found = fetches_.find(url);
    if (found == fetches_.end()) return std::nullopt;
    Fetch& fetch = found->second;
    fetch.handlers.push_back(std::move(handler));
    if (queue_.contains(url)) queue_.add(url, Clock::shared().monotonicSeconds());
    return shownAtOnce(fetch.kept);
}

bool MediaFetcher::livesOnDisk(const Data& data) const { return disk_ && data.size() > limits_.bodyInMemoryBytes; }

void MediaFetcher::remember(const std::string& url, const Medium& medium) {
    // A large medium is found on the disk as fast. Its mapping here would keep its room on the disk after its removal.
    if (!livesOnDisk(medium.data)) memory_.insert(url, medium, costOf(url, medium.data.size()));
}

void MediaFetcher::cancel(const std::string& url) {
    Handlers handlers;
    std::uint64_t transfer = 0;
    {
        const std::lock_guard lock(mutex_);
        const auto found = fetches_.find(url);
        if (found == fetches_.end() || ++found->second.takenBack < found->second.handlers.size()) return;
        queue_.remove(url);
        transfer = found->second.transfer;
        handlers = std::move(found->second.handlers);
        fetches_.erase(found);
    }
    if (transfer != 0) transport_->cancel(transfer);
    deliver(std::move(handlers), Data(), std::string(cancelledText));
}

void MediaFetcher::check(const std::string& url, std::uint64_t number) {
    const auto known = disk_->find(url, MediaDiskCache::Checking::all);
    {
        const std::lock_guard lock(mutex_);
        const auto found = fetches_.find(url);
        if (found == fetches_.end() || found->second.number != number) return;
        if (known.medium && known.medium->facts.isFreshAt(nowInSeconds())) {
            remember(url, *known.medium);
            Handlers handlers = std::move(found->second.handlers);
            fetches_.erase(found);
            deliver(std::move(handlers), known.medium->data, std::nullopt);
            return;
        }
        found->second.kept = known.medium;
        queue_.add(url, Clock::shared().monotonicSeconds());
    }
    startNext();
}

bool MediaFetcher::hasFreeLane() {
    const double now = Clock::shared().monotonicSeconds();
    const auto slow = static_cast<int>(std::count_if(underWay_.begin(), underWay_.end(), [&](const auto& fetch) {
        return now - fetch.second >= limits_.slowSeconds;
    }));
    return static_cast<int>(underWay_.size()) - std::min(slow, limits_.simultaneousSlow) < limits_.simultaneous;
}

void MediaFetcher::wakeLater() {
    if (wakes_ || !RunLoop::hasMain()) return;
    wakes_ = true;
    RunLoop::main().performAfter(limits_.slowSeconds, [fetcher = weak_from_this()] {
        const auto self = fetcher.lock();
        if (!self) return;
        {
            const std::lock_guard lock(self->mutex_);
            self->wakes_ = false;
        }
        self->startNext();
    });
}

void MediaFetcher::startNext() {
    while (true) {
        std::string url;
        std::uint64_t number = 0;
        std::optional<Medium> kept;
        {
            const std::lock_guard lock(mutex_);
            if (queue_.isEmpty()) return;
            if (!hasFreeLane()) return wakeLater();
            url = *queue_.takeFirst();
            Fetch& fetch = fetches_.at(url);
            number = fetch.number;
            kept = fetch.kept;
            underWay_.emplace(number, Clock::shared().monotonicSeconds());
        }
        MediumBody::OpenFile openFile;
        if (disk_) openFile = [this] { return disk_->newFile(); };
        const auto body = std::make_shared<MediumBody>(limits_, std::move(openFile));
        const std::uint64_t transfer = transport_->start(
            requestFor(url, kept, body), [fetcher = weak_from_this(), url, number, body](HttpAnswer answer) {
                if (const auto self = fetcher.lock()) self->arrived(url, number, body, std::move(answer));
            });
        bool isWanted = false;
        {
            const std::lock_guard lock(mutex_);
            const auto found = fetches_.find(url);
            isWanted = found != fetches_.end() && found->second.number == number;
            if (isWanted) found->second.transfer = transfer;
        }
        // The fetch has ended, or was cancelled before the transport's number was known.
        if (!isWanted && transfer != 0) transport_->cancel(transfer);
    }
}

HttpRequest MediaFetcher::requestFor(const std::string& url, const std::optional<Medium>& kept,
                                     const std::shared_ptr<MediumBody>& body) const {
    HttpRequest request;
    request.address = url;
    request.userAgent = userAgent_;
    request.maximumBytes = limits_.maximumMediumBytes;
    request.minimumSpeed = limits_.minimumSpeed;
    request.maximumSeconds = limits_.maximumSeconds;
    request.usesProxy = !isOnThisMachine(*originOfAddress(url));
    request.sink = body;
    if (kept && !kept->facts.entityTag.empty()) {
        request.headers.push_back("If-None-Match: " + kept->facts.entityTag);
    } else if (kept && !kept->facts.lastModified.empty()) {
        request.headers.push_back("If-Modified-Since: " + kept->facts.lastModified);
    }
    return request;
}

void MediaFetcher::arrived(const std::string& url, std::uint64_t number, const std::shared_ptr<MediumBody>& body,
                           HttpAnswer answer) {
    std::optional<Medium> kept;
    bool isWanted = false;
    {
        const std::lock_guard lock(mutex_);
        underWay_.erase(number);
        const auto found = fetches_.find(url);
        isWanted = found != fetches_.end() && found->second.number == number;
        if (isWanted) kept = found->second.kept;
    }
    if (isWanted) {
        // The medium is kept before the fetch is removed, so that a request in between joins the fetch or finds the
        // medium.
        const Outcome outcome = judge(url, kept, body, answer);
        Handlers handlers;
        {
            const std::lock_guard lock(mutex_);
            const auto found = fetches_.find(url);
            if (found != fetches_.end() && found->second.number == number) {
                handlers = std::move(found->second.handlers);
                fetches_.erase(found);
            }
        }
        deliver(std::move(handlers), outcome.data, outcome.error);
    }
    // After a cancelled answer the transport may have stopped; starting the next fetch here would then recurse. A task
    // of the main run loop starts it instead.
    if (!answer.cancelled) return startNext();
    if (!RunLoop::hasMain()) return;
    RunLoop::main().perform([fetcher = weak_from_this()] {
        if (const auto self = fetcher.lock()) self->startNext();
    });
}

MediaFetcher::Outcome MediaFetcher::judge(const std::string& url, const std::optional<Medium>& kept,
                                          const std::shared_ptr<MediumBody>& body, const HttpAnswer& answer) {
    const std::int64_t now = nowInSeconds();
    std::optional<std::string> error = errorOf(answer, kept.has_value());
    if (!error && answer.status == 304) {
        if (const auto facts = mediumFactsOf(answer, now)) {
            Medium confirmed = *kept;
            confirmed.facts.freshUntil = facts->freshUntil;
            const std::lock_guard lock(mutex_);
            remember(url, confirmed);
            if (disk_) worker_.post([this, url, facts = *facts] { disk_->refresh(url, facts); });
        }
        return {kept->data, std::nullopt};
    }
    if (!error) {
        const Data data = body->finish();
        if (data.isNull()) return {Data(), body->failure()};
        const auto facts = answer.status == 200 ? mediumFactsOf(answer, now) : std::nullopt;
        if (facts) {
            keep(url, {data, *facts}, body);
        } else {
            forget(url);
        }
        return {data, std::nullopt};
    }
    if (saysItIsGone(answer)) {
        forget(url);
    } else if (kept && !kept->facts.mustRevalidate && !answer.cancelled) {
        return {kept->data, std::nullopt};
    }
    return {Data(), std::move(error)};
}

void MediaFetcher::keep(const std::string& url, const Medium& medium, const std::shared_ptr<MediumBody>& body) {
    {
        const std::lock_guard lock(mutex_);
        // A large medium is found here until its file has its name.
        memory_.insert(url, medium, costOf(url, livesOnDisk(medium.data) ? costOfMapped : medium.data.size()));
    }
    if (!disk_) return;
    worker_.post([this, url, medium, body] {
        disk_->keep(url, medium.facts, medium.data, body->takeFile());
        if (!livesOnDisk(medium.data)) return;
        const std::lock_guard lock(mutex_);
        const Medium* remembered = memory_.find(url);
        if (remembered && remembered->data.bytes() == medium.data.bytes()) memory_.remove(url);
    });
}

void MediaFetcher::forget(const std::string& url) {
    const std::lock_guard lock(mutex_);
    memory_.remove(url);
    if (!disk_) return;
    // The removal waits behind the writes that the worker has not done yet; until then the file is not looked at.
    ++beingRemoved_[url];
    worker_.post([this, url] {
        disk_->remove(url);
        const std::lock_guard relock(mutex_);
        if (--beingRemoved_[url] == 0) beingRemoved_.erase(url);
    });
}

}  // namespace ostrel
