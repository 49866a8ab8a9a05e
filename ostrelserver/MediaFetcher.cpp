#include "ostrelserver/MediaFetcher.h"

#include "ostrelserver/WebAddress.h"
#include "platform/foundation/RunLoop.h"

#include <utility>

namespace ostrel {

namespace {

bool isOnThisMachine(const std::string& origin) {
    const std::size_t host = origin.find("://") + 3;
    return isLoopbackHost(std::string_view(origin).substr(host, origin.rfind(':') - host));
}

std::optional<std::string> errorOf(const HttpAnswer& answer) {
    if (!answer.error.empty()) return answer.error;
    if (answer.status >= 200 && answer.status < 300) return std::nullopt;
    return statusSentence(answer);
}

}  // namespace

MediaFetcher::MediaFetcher(Limits limits, std::string userAgent, std::shared_ptr<HttpTransport> transport)
    : limits_(limits),
      userAgent_(std::move(userAgent)),
      transport_(std::move(transport)),
      cache_(limits.maximumCacheBytes) {}

MediaFetcher::~MediaFetcher() {
    for (auto& [url, handlers] : waiting_) deliver(std::move(handlers), Data(), std::string(cancelledText));
}

void MediaFetcher::deliver(std::vector<Handler> handlers, const Data& data,
                           const std::optional<std::string>& error) {
    if (!RunLoop::hasMain()) return;
    for (Handler& handler : handlers) {
        if (!handler) continue;
        RunLoop::main().perform(
            [handler = std::move(handler), data, error] { handler(data, !error.has_value(), error); });
    }
}

Data MediaFetcher::request(const std::string& url, Handler handler) {
    std::vector<Handler> handlers;
    handlers.push_back(std::move(handler));
    if (!originOfAddress(url)) {
        deliver(std::move(handlers), Data(), "The address is not an http or https address.");
        return {};
    }
    {
        const std::lock_guard lock(mutex_);
        if (const Data* cached = cache_.find(url)) {
            deliver(std::move(handlers), *cached, std::nullopt);
            return *cached;
        }
        std::vector<Handler>& waiting = waiting_[url];
        waiting.push_back(std::move(handlers.front()));
        if (waiting.size() > 1) return {};
        queue_.push_back(url);
    }
    startNext();
    return {};
}

void MediaFetcher::startNext() {
    while (true) {
        HttpRequest request;
        {
            const std::lock_guard lock(mutex_);
            if (queue_.empty() || underWay_ >= limits_.simultaneous) return;
            request.address = std::move(queue_.front());
            queue_.pop_front();
            ++underWay_;
        }
        request.userAgent = userAgent_;
        request.maximumBytes = limits_.maximumMediumBytes;
        request.usesProxy = !isOnThisMachine(*originOfAddress(request.address));
        const std::string url = request.address;
        transport_->start(std::move(request), [fetcher = weak_from_this(), url](HttpAnswer answer) {
            if (const auto self = fetcher.lock()) self->arrived(url, std::move(answer));
        });
    }
}

void MediaFetcher::arrived(const std::string& url, HttpAnswer answer) {
    const std::optional<std::string> error = errorOf(answer);
    const Data data = error ? Data() : Data::take(std::move(answer.body));
    std::vector<Handler> handlers;
    {
        const std::lock_guard lock(mutex_);
        const auto found = waiting_.find(url);
        handlers = std::move(found->second);
        waiting_.erase(found);
        --underWay_;
        if (!error) cache_.insert(url, data, data.size());
    }
    deliver(std::move(handlers), data, error);
    // A cancelled answer means the transport has ended: starting the next would only recurse.
    if (!answer.cancelled) startNext();
}

}  // namespace ostrel
