#include "articleserver/http/HttpServer.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/http/HttpConnection.h"

#include <fcntl.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <memory>

namespace articleserver {

namespace {

constexpr std::size_t fileChunk = 256 * 1024;

/// Lets httplib send `file`. The descriptor closes when httplib drops the last copy of the provider.
bool provideFile(const WebFile& file, const std::string& contentType, httplib::Response& response) {
    int opened = ::open(file.path.c_str(), O_RDONLY | O_CLOEXEC);
    if (opened < 0) return false;
    std::shared_ptr<int> descriptor(new int(opened), [](int* held) {
        ::close(*held);
        delete held;
    });
    auto provider = [descriptor, base = file.offset](std::size_t offset, std::size_t length, httplib::DataSink& sink) {
        std::string chunk(std::min(length, fileChunk), '\0');
        ssize_t count = ::pread(*descriptor, chunk.data(), chunk.size(), static_cast<off_t>(base + offset));
        return count > 0 && sink.write(chunk.data(), static_cast<std::size_t>(count));
    };
    response.set_content_provider(static_cast<std::size_t>(file.length), contentType, provider);
    return true;
}

std::uint64_t lengthOf(const httplib::Request& request) {
    return static_cast<std::uint64_t>(decimalId(request.get_header_value("Content-Length")).value_or(0));
}

void fill(httplib::Response& response, const WebReply& reply, bool isClosing) {
    response.status = reply.status;
    for (const auto& [name, value] : reply.headers) response.headers.emplace(name, value);
    response.set_header("X-Content-Type-Options", "nosniff");
    if (isClosing) response.set_header("Connection", "close");
    if (reply.file && reply.file->length > 0) {
        if (!provideFile(*reply.file, reply.contentType, response)) response.status = 404;
        return;
    }
    if (!reply.contentType.empty()) response.set_content(reply.body, reply.contentType);
}

}  // namespace

HttpServer::HttpServer(WebService& service) : service_(service) {
    stopEvent_ = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    new_task_queue = [] { return new httplib::ThreadPool(ServerLimits::connectionThreads); };
    // By default httplib also sets SO_REUSEPORT, and then two servers could share a port without an error.
    set_socket_options([](socket_t socket) {
        int on = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    });
    set_tcp_nodelay(true);
    set_keep_alive_max_count(ServerLimits::requestsPerConnection);
    set_keep_alive_timeout(std::chrono::seconds(ServerLimits::idleTime).count());

    // One handler takes every path; the service finds the route.
    const std::string everything = R"([\s\S]*)";
    auto plain = [this](const httplib::Request& request, httplib::Response& response) {
        serve(request, response, nullptr);
    };
    auto withBody = [this](const httplib::Request& request, httplib::Response& response,
                           const httplib::ContentReader& reader) { serve(request, response, &reader); };
    Get(everything, plain);
    Options(everything, plain);
    Delete(everything, plain);
    Delete(everything, withBody);
    Post(everything, withBody);
    Put(everything, withBody);
    Patch(everything, withBody);
    set_expect_100_continue_handler(
        [this](const httplib::Request& request, httplib::Response& response) { return expected(request, response); });
    set_error_handler(
        httplib::Server::HandlerWithResponse([this](const httplib::Request&, httplib::Response& response) {
            if (!response.body.empty()) return HandlerResponse::Unhandled;
            fill(response, service_.refusal(response.status, "The request was refused."), true);
            return HandlerResponse::Handled;
        }));
    set_exception_handler([this](const httplib::Request&, httplib::Response& response, std::exception_ptr) {
        logServerError("an exception ended a request");
        fill(response, service_.refusal(500, "The server failed."), true);
    });
}

HttpServer::~HttpServer() {
    stop();
    if (stopEvent_ >= 0) ::close(stopEvent_);
}

ServerResult<int> HttpServer::bind(const std::string& host, int port) {
    int taken = port;
    if (port == 0) {
        taken = bind_to_any_port(host);
    } else if (!bind_to_port(host, port)) {
        taken = -1;
    }
    if (taken <= 0 || stopEvent_ < 0) {
        std::string where = host + (port == 0 ? "" : " port " + std::to_string(port));
        return ServerFailure{ServerFault::internal, "Cannot listen on " + where + "; another program may be using it."};
    }
    // httplib sets a backlog of 5, which is too short for a burst of connections.
    ::listen(svr_sock_, ServerLimits::listenBacklog);
    return taken;
}

ServerResult<void> HttpServer::start() {
    thread_ = std::thread([this] { listen_after_bind(); });
    for (int wait = 0; wait < 5000 && !is_running(); ++wait) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    if (!is_running()) return ServerFailure{ServerFault::internal, "The server did not start listening."};
    return {};
}

void HttpServer::stop() {
    if (!thread_.joinable()) return;
    eventfd_t one = 1;
    ::eventfd_write(stopEvent_, one);
    httplib::Server::stop();
    thread_.join();
}

bool HttpServer::process_and_close_socket(socket_t socket) {
    ++connections_;
    HttpConnection connection(socket, stopEvent_);
    auto idleTime = [this]() -> std::chrono::milliseconds {
        bool isCrowded = connections_ > ServerLimits::crowdedConnections;
        return isCrowded ? std::chrono::milliseconds(ServerLimits::crowdedIdleTime)
                         : std::chrono::milliseconds(ServerLimits::idleTime);
    };
    for (std::size_t count = 1; count <= ServerLimits::requestsPerConnection; ++count) {
        auto head = connection.receiveHead(idleTime);
        if (head == HttpConnection::Head::closed) break;
        if (head == HttpConnection::Head::refused) {
            WebReply reply = service_.refusal(connection.refusalStatus(), connection.refusalText());
            std::string answer = "HTTP/1.1 " + std::to_string(reply.status) +
                                 " \r\nContent-Type: " + reply.contentType +
                                 "\r\nContent-Length: " + std::to_string(reply.body.size()) +
                                 "\r\nConnection: close\r\n\r\n" + reply.body;
            connection.write(answer.data(), answer.size());
            break;
        }
        bool isClosed = false;
        bool isServed = process_request(connection, count == ServerLimits::requestsPerConnection, isClosed,
                                        [&](httplib::Request& request) {
                                            for (const auto& [name, value] : connection.heldHeaders()) {
                                                request.set_header(name, value);
                                            }
                                        });
        if (!isServed || isClosed || connection.hasUnread()) break;
    }
    connection.finish();
    ::close(socket);
    --connections_;
    return true;
}

void HttpServer::serve(const httplib::Request& request, httplib::Response& response,
                       const httplib::ContentReader* reader) {
    WebReply reply;
    try {
        reply = replyTo(request, reader, response);
    } catch (const std::exception& error) {
        logServerError(std::string("a request failed: ") + error.what());
        reply = service_.refusal(500, "The server failed.");
    }
    fill(response, reply, response.has_header("Connection"));
}

WebReply HttpServer::replyTo(const httplib::Request& request, const httplib::ContentReader* reader,
                             httplib::Response& response) {
    const std::uint64_t length = lengthOf(request);
    // An answer that comes before the server has read the whole body closes the connection.
    if (length > 0) response.set_header("Connection", "close");
    WebRequest asked;
    if (auto refusal = understand(request, asked)) return *refusal;
    WebIntake intake = service_.intake(asked, length);
    if (intake.refusal) return *intake.refusal;
    if (length > 0 && reader) {
        std::uint64_t taken = 0;
        if (!intake.receiver) asked.body.reserve(length);
        bool isWanted = true;
        bool isRead = (*reader)([&](const char* bytes, std::size_t size) {
            taken += size;
            if (intake.receiver) {
                isWanted = intake.receiver->take({bytes, size});
                return isWanted;
            }
            asked.body.append(bytes, size);
            return true;
        });
        if (isWanted && (!isRead || taken != length)) {
            return service_.refusal(400, "The body of the request ended early.");
        }
        if (isWanted) response.headers.erase("Connection");
    }
    asked.receiver = std::move(intake.receiver);
    return service_.reply(asked);
}

int HttpServer::expected(const httplib::Request& request, httplib::Response& response) {
    WebRequest asked;
    auto refusal = understand(request, asked);
    if (!refusal) refusal = service_.intake(asked, lengthOf(request)).refusal;
    if (!refusal) return 100;
    fill(response, *refusal, true);
    return refusal->status;
}

std::optional<WebReply> HttpServer::understand(const httplib::Request& request, WebRequest& asked) const {
    asked.method = request.method;
    asked.remoteAddress = request.remote_addr;
    for (const auto& [name, value] : request.headers) {
        std::string lower = name;
        std::transform(lower.begin(), lower.end(), lower.begin(),
                       [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
        if (lower.starts_with(HttpConnection::heldPrefix)) lower.erase(0, HttpConnection::heldPrefix.size());
        asked.headers.emplace(std::move(lower), value);
    }
    auto path = decodedPercent(request.target, PlusSign::isPlus);
    if (!path) return service_.refusal(400, path.failure().text);
    // Clients join the base address and the path with one slash, two slashes or none.
    asked.path = "/" + path->substr(std::min(path->find_first_not_of('/'), path->size()));
    const auto held = asked.headers.find(HttpConnection::queryHeader);
    if (held == asked.headers.end()) return std::nullopt;
    auto query = parseFields(held->second);
    asked.headers.erase(held);
    if (!query) return service_.refusal(400, query.failure().text);
    asked.query = std::move(*query);
    return std::nullopt;
}

}  // namespace articleserver
