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

/// How the body of a request is taken: refused at once, piece by piece, or else as a whole.
struct WebIntake {
    std::optional<WebReply> refusal;
    std::shared_ptr<WebBodyReceiver> receiver;
};

/// What an HttpServer serves. Called from any of its threads at once.
class WebService {
public:
    virtual ~WebService() = default;

    /// What is done with a body of `length` bytes. Asked before any of it is read, and of a client that waits to be asked
    /// for it (RFC 9110, 10.1.1) twice.
    virtual WebIntake intake(const WebRequest& request, std::uint64_t length) = 0;
    virtual WebReply reply(const WebRequest& request) = 0;
    /// The answer to a request that did not come as far as a route.
    virtual WebReply refusal(int status, const std::string& text) const = 0;
};

/// httplib's server with bounded heads and bodies, one service for every path, and a prompt stop.
/// Started and stopped by its owner's thread; serves on ServerLimits::connectionThreads threads.
class HttpServer final : private httplib::Server {
public:
    explicit HttpServer(WebService& service);
    ~HttpServer() override;

    /// Takes the port, 0 for one that the system chooses; answers the one taken. Serves from start() on.
    ServerResult<int> bind(const std::string& host, int port);
    ServerResult<ServerDone> start();
    /// Ends idle connections and those under way, and waits for their threads. May be called twice.
    void stop();

private:
    bool process_and_close_socket(socket_t socket) override;
    void serve(const httplib::Request& request, httplib::Response& response,
               const httplib::ContentReader* reader);
    WebReply replyTo(const httplib::Request& request, const httplib::ContentReader* reader,
                     httplib::Response& response);
    /// The request for the service; or why it cannot be understood.
    std::optional<WebReply> understand(const httplib::Request& request, WebRequest& asked) const;
    /// The status to answer a client that waits before it sends its body: 100, or the refusal's.
    int expected(const httplib::Request& request, httplib::Response& response);

    WebService& service_;
    int stopEvent_ = -1;
    std::atomic<int> connections_{0};  ///< a count only; orders nothing
    std::thread thread_;
};

}  // namespace articleserver
