#pragma once

#include "serverframework/http/HttpTransfer.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ostrel {

/// Carries all requests over libcurl's multi interface on one network thread. Connections are kept open and, where a
/// server offers HTTP/2, shared by requests. Every completion is called exactly once: on the network thread, or, when
/// `start` is called after `stop`, by `start` itself.
class HttpTransport final {
public:
    explicit HttpTransport(TransportLimits limits);
    ~HttpTransport();
    HttpTransport(const HttpTransport&) = delete;
    HttpTransport& operator=(const HttpTransport&) = delete;

    /// Returns the number by which the request is cancelled. Any thread.
    std::uint64_t start(HttpRequest request, HttpCompletion completion);
    /// Ends a request with the error "cancelled". The number of a request that has ended is ignored. Any thread.
    void cancel(std::uint64_t id);
    /// Cancels all requests and waits until the network thread has ended.
    void stop();

private:
    using Transfers = std::vector<std::unique_ptr<HttpTransfer>>;
    struct Orders {
        Transfers starts;
        std::vector<std::uint64_t> cancels;
        bool stop = false;
    };

    void run();
    Orders takeOrders();
    void begin(std::unique_ptr<HttpTransfer> transfer);
    void cancelRunning(std::uint64_t id);
    void collectEnded();

    const TransportLimits limits_;
    void* const multi_;

    /// Guards the three members that follow.
    std::mutex mutex_;
    Orders orders_;
    bool stopped_ = false;
    std::uint64_t lastId_ = 0;

    /// Used by the network thread only.
    std::map<std::uint64_t, std::unique_ptr<HttpTransfer>> running_;
    std::thread thread_;
};

}  // namespace ostrel
