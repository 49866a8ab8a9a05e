#include "serverframework/http/HttpTransport.h"

#include <cassert>
#include <curl/curl.h>
#include <utility>

namespace ostrel {

namespace {

void* makeMulti(const TransportLimits& limits) {
    static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
    assert(initialised == CURLE_OK);
    CURLM* multi = initialised == CURLE_OK ? curl_multi_init() : nullptr;
    assert(multi);
    curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, static_cast<long>(limits.connectionsPerHost));
    curl_multi_setopt(multi, CURLMOPT_MAX_TOTAL_CONNECTIONS, static_cast<long>(limits.connections));
    curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, static_cast<long>(limits.connections));
    return multi;
}

}  // namespace

HttpTransport::HttpTransport(TransportLimits limits)
    : limits_(limits), multi_(makeMulti(limits)), thread_([this] { run(); }) {}

HttpTransport::~HttpTransport() {
    stop();
    curl_multi_cleanup(multi_);
}

std::uint64_t HttpTransport::start(HttpRequest request, HttpCompletion completion) {
    {
        const std::lock_guard lock(mutex_);
        if (!stopped_) {
            const std::uint64_t id = ++lastId_;
            orders_.starts.push_back(
                std::make_unique<HttpTransfer>(id, std::move(request), std::move(completion), limits_));
            curl_multi_wakeup(multi_);
            return id;
        }
    }
    HttpAnswer answer;
    answer.cancelled = true;
    answer.error = cancelledText;
    completion(std::move(answer));
    return 0;
}

void HttpTransport::cancel(std::uint64_t id) {
    const std::lock_guard lock(mutex_);
    if (stopped_) return;
    orders_.cancels.push_back(id);
    curl_multi_wakeup(multi_);
}

void HttpTransport::stop() {
    {
        const std::lock_guard lock(mutex_);
        if (stopped_) return;
        stopped_ = true;
        orders_.stop = true;
        curl_multi_wakeup(multi_);
    }
    thread_.join();
}

HttpTransport::Orders HttpTransport::takeOrders() {
    const std::lock_guard lock(mutex_);
    return std::exchange(orders_, {});
}

void HttpTransport::run() {
    // Orders, sockets and libcurl's own timers end the poll; the time-out only guards against a lost wake-up.
    constexpr int longestPollMilliseconds = 10'000;
    while (true) {
        Orders orders = takeOrders();
        for (auto& transfer : orders.starts) begin(std::move(transfer));
        for (const std::uint64_t id : orders.cancels) cancelRunning(id);
        if (orders.stop) break;
        int stillRunning = 0;
        curl_multi_perform(multi_, &stillRunning);
        collectEnded();
        curl_multi_poll(multi_, nullptr, 0, longestPollMilliseconds, nullptr);
    }
    while (!running_.empty()) cancelRunning(running_.begin()->first);
}

void HttpTransport::begin(std::unique_ptr<HttpTransfer> transfer) {
    CURL* handle = transfer->prepare();
    if (!handle || curl_multi_add_handle(multi_, handle) != CURLM_OK) {
        transfer->finish(CURLE_FAILED_INIT);
        return;
    }
    running_.emplace(transfer->id(), std::move(transfer));
}

void HttpTransport::cancelRunning(std::uint64_t id) {
    const auto found = running_.find(id);
    if (found == running_.end()) return;
    const std::unique_ptr<HttpTransfer> transfer = std::move(found->second);
    running_.erase(found);
    curl_multi_remove_handle(multi_, transfer->handle());
    transfer->finishCancelled();
}

void HttpTransport::collectEnded() {
    int left = 0;
    while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
        if (message->msg != CURLMSG_DONE) continue;
        // libcurl frees the message when its handle is removed.
        CURL* handle = message->easy_handle;
        const CURLcode result = message->data.result;
        void* self = nullptr;
        curl_easy_getinfo(handle, CURLINFO_PRIVATE, &self);
        auto* transfer = static_cast<HttpTransfer*>(self);
        curl_multi_remove_handle(multi_, handle);
        if (transfer->redirect(result) && curl_multi_add_handle(multi_, handle) == CURLM_OK) continue;
        const auto found = running_.find(transfer->id());
        assert(found != running_.end());
        const std::unique_ptr<HttpTransfer> ended = std::move(found->second);
        running_.erase(found);
        ended->finish(result);
    }
}

}  // namespace ostrel
