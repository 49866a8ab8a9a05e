#pragma once

#include "serverframework/http/HttpTransfer.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace ostrel {

/// Carries all requests over libcurl's multi interface on one network thread. Connections are kept and, where a server
/// offers HTTP/2, shared. Every completion is called exactly once, on the network thread; after `stop` at once, on the
/// thread that called `start`.
class HttpTransport final {
public:
    explicit HttpTransport(TransportLimits limits);
    ~HttpTransport();
    HttpTransport(const HttpTransport&) = delete;
    HttpTransport& operator=(const HttpTransport&) = delete;

    /// Returns the number by which the request is cancelled. Any thread.
    std::uint64_t start(HttpRequest request, HttpCompletion completion);
    /// Ends a request with the error "cancelled"; numbers of requests that have ended are ignored. Any thread.
    void cancel(std::uint64_t id);
    /// Cancels everything and waits until the network thread has ended.
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

    std::mutex mutex_;
    Orders orders_;             // guarded by mutex_
    bool stopped_ = false;      // guarded by mutex_
    std::uint64_t lastId_ = 0;  // guarded by mutex_

    /// Network thread.
    std::map<std::uint64_t, std::unique_ptr<HttpTransfer>> running_;
    std::thread thread_;
};

}  // namespace ostrel
