#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/http/WebMessage.h"

#include <httplib.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace articleserver {

/// How the server takes the body of a request: not at all (`refusal`), in pieces (`receiver`), or else in
/// memory.
struct WebIntake {
    std::optional<WebReply> refusal;
    std::shared_ptr<WebBodyReceiver> receiver;
};

/// The application behind an HttpServer. Several threads of the server call it at the same time.
class WebService {
public:
    virtual ~WebService() = default;

    /// Decides how the server takes a body of `length` bytes. The server asks before it reads the body. For a
    /// request with "Expect: 100-continue" (RFC 9110, 10.1.1) it asks twice: before its 100 and before it
    /// reads.
    virtual WebIntake intake(const WebRequest& request, std::uint64_t length) = 0;
    virtual WebReply reply(const WebRequest& request) = 0;
    /// The answer to a request that the server itself refuses.
    virtual WebReply refusal(int status, const std::string& text) const = 0;
};

/// httplib's server with limits for heads and bodies, one service for all paths, and a stop that does not
/// wait for clients. Its owner starts and stops it on one thread; it serves on
/// ServerLimits::connectionThreads threads.
class HttpServer final : private httplib::Server {
public:
    explicit HttpServer(WebService& service);
    ~HttpServer() override;

    /// Binds the port, or for 0 a port that the system chooses, and returns it. start() then begins to serve.
    ServerResult<int> bind(const std::string& host, int port);
    ServerResult<void> start();
    /// Ends all connections, idle or not, and waits for their threads. A second call does nothing.
    void stop();

private:
    bool process_and_close_socket(socket_t socket) override;
    void serve(const httplib::Request& request, httplib::Response& response, const httplib::ContentReader* reader);
    WebReply replyTo(const httplib::Request& request, const httplib::ContentReader* reader,
                     httplib::Response& response);
    /// Fills `asked`, the request for the service; or returns the refusal of a request that cannot be
    /// decoded.
    std::optional<WebReply> understand(const httplib::Request& request, WebRequest& asked) const;
    /// The status for a request with "Expect: 100-continue": 100, or the status of the refusal.
    int expected(const httplib::Request& request, httplib::Response& response);

    WebService& service_;
    int stopEvent_ = -1;
    /// The number of open connections. The atomic counts only; it orders no other memory.
    std::atomic<int> connections_{0};
    std::thread thread_;
};

}  // namespace articleserver
