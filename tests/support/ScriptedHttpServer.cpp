#include "tests/support/ScriptedHttpServer.h"

#include <algorithm>
#include <arpa/inet.h>
#include <chrono>
#include <cstdlib>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sstream>
#include <sys/socket.h>
#include <unistd.h>

namespace ostrel {

namespace {

constexpr std::size_t keptBodyBytes = 64 * 1024;

std::string lowered(std::string text) {
    for (char& c : text) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
    }
    return text;
}

bool sendAll(int socket, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return true;
}

/// Appends what arrives next; false at the end of the connection.
bool receive(int socket, std::string& to) {
    char buffer[64 * 1024];
    const ssize_t received = ::recv(socket, buffer, sizeof(buffer), 0);
    if (received <= 0) return false;
    to.append(buffer, static_cast<std::size_t>(received));
    return true;
}

void addBody(ScriptedHttpServer::Request& request, std::string_view bytes) {
    request.bodyBytes += bytes.size();
    request.bodyFingerprint = fingerprint(bytes, request.bodyFingerprint);
    request.bodyBegin.append(bytes.substr(0, keptBodyBytes - request.bodyBegin.size()));
}

}  // namespace

std::uint64_t fingerprint(std::string_view bytes, std::uint64_t from) {
    for (const char c : bytes) from = (from ^ static_cast<unsigned char>(c)) * 1099511628211ULL;
    return from;
}

ScriptedHttpServer::ScriptedHttpServer() {
    listener_ = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    if (listener_ < 0 || ::bind(listener_, reinterpret_cast<sockaddr*>(&address), length) != 0 ||
        ::listen(listener_, 128) != 0 ||
        ::getsockname(listener_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
        std::abort();
    }
    port_ = ntohs(address.sin_port);
    acceptor_ = std::thread([this] { acceptConnections(); });
}

ScriptedHttpServer::~ScriptedHttpServer() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        for (const auto& connection : open_) ::shutdown(connection->socket, SHUT_RDWR);
    }
    stopped_.notify_all();
    ::shutdown(listener_, SHUT_RDWR);
    acceptor_.join();
    for (const auto& connection : open_) {
        connection->thread.join();
        ::close(connection->socket);
    }
    ::close(listener_);
}

ScriptedHttpServer::Answer ScriptedHttpServer::answer(std::string_view body, int status, std::string_view headers) {
    Answer result;
    result.bytes = "HTTP/1.1 " + std::to_string(status) + (status == 200 ? " OK" : " Reason") +
                   "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n";
    result.bytes.append(headers).append("\r\n").append(body);
    return result;
}

void ScriptedHttpServer::on(std::string path, Answer answer) {
    on(std::move(path), [answer = std::move(answer)](const Request&) { return answer; });
}

void ScriptedHttpServer::on(std::string path, Script script) {
    const std::lock_guard lock(mutex_);
    scripts_[std::move(path)] = std::move(script);
}

void ScriptedHttpServer::refuseBody(std::string path, Answer answer) {
    on(path, std::move(answer));
    const std::lock_guard lock(mutex_);
    refused_.insert(std::move(path));
}

std::string ScriptedHttpServer::address() const { return "http://127.0.0.1:" + std::to_string(port_); }

std::vector<ScriptedHttpServer::Request> ScriptedHttpServer::requests() const {
    const std::lock_guard lock(mutex_);
    return requests_;
}

std::size_t ScriptedHttpServer::requestCount(std::string_view path) const {
    const std::lock_guard lock(mutex_);
    return static_cast<std::size_t>(std::ranges::count_if(requests_, [&](const Request& request) {
        return std::string_view(request.target).substr(0, request.target.find('?')) == path;
    }));
}

void ScriptedHttpServer::acceptConnections() {
    while (true) {
        const int socket = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        const std::lock_guard lock(mutex_);
        if (stopping_ || socket < 0) {
            if (socket >= 0) ::close(socket);
            return;
        }
        const int on = 1;
        ::setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
        ++connections_;
        auto& connection = *open_.emplace_back(std::make_unique<Connection>());
        connection.socket = socket;
        connection.thread = std::thread([this, &connection] {
            serve(connection);
            ::shutdown(connection.socket, SHUT_RDWR);
        });
    }
}

void ScriptedHttpServer::serve(Connection& connection) {
    while (true) {
        Request request;
        if (!readHead(connection, request)) return;
        std::unique_lock lock(mutex_);
        const bool refuses = refused_.contains(request.target);
        lock.unlock();
        if (!refuses && !readBody(connection, request)) return;
        lock.lock();
        requests_.push_back(request);
        lock.unlock();
        const int now = ++underWay_;
        for (int most = mostAtOnce_; now > most && !mostAtOnce_.compare_exchange_weak(most, now);) {}
        const bool goesOn = sendAnswer(connection, answerFor(request));
        --underWay_;
        if (!goesOn || refuses) return;
    }
}

bool ScriptedHttpServer::readHead(Connection& connection, Request& request) {
    std::size_t end = 0;
    while ((end = connection.pending.find("\r\n\r\n")) == std::string::npos) {
        if (!receive(connection.socket, connection.pending)) return false;
        // The hello of TLS gets what a web server without it says.
        if (connection.pending.front() == '\x16') {
            sendAll(connection.socket, "HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
            return false;
        }
    }
    std::istringstream head(connection.pending.substr(0, end + 2));
    connection.pending.erase(0, end + 4);
    head >> request.method >> request.target;
    std::string line;
    std::getline(head, line);
    while (std::getline(head, line)) {
        const std::size_t colon = line.find(':');
        request.headers[lowered(line.substr(0, colon))] = line.substr(colon + 2, line.size() - colon - 3);
    }
    request.bodyFingerprint = fingerprint({});
    return true;
}

bool ScriptedHttpServer::readBody(Connection& connection, Request& request) {
    const auto length = request.headers.find("content-length");
    std::size_t left = length == request.headers.end() ? 0 : std::stoull(length->second);
    if (left > 0 && request.headers.contains("expect")) sendAll(connection.socket, "HTTP/1.1 100 Continue\r\n\r\n");
    while (left > 0) {
        if (connection.pending.empty() && !receive(connection.socket, connection.pending)) return false;
        const std::size_t taken = std::min(left, connection.pending.size());
        addBody(request, std::string_view(connection.pending).substr(0, taken));
        connection.pending.erase(0, taken);
        left -= taken;
    }
    return true;
}

ScriptedHttpServer::Answer ScriptedHttpServer::answerFor(const Request& request) {
    std::unique_lock lock(mutex_);
    const auto found = scripts_.find(request.target.substr(0, request.target.find('?')));
    const Script script = found == scripts_.end() ? nullptr : found->second;
    lock.unlock();
    return script ? script(request) : answer("", 404);
}

bool ScriptedHttpServer::sendAnswer(Connection& connection, const Answer& answer) {
    if (answer.delaySeconds > 0 && !wait(answer.delaySeconds)) return false;
    if (!sendAll(connection.socket, std::string_view(answer.bytes).substr(0, answer.cutAfter))) return false;
    for (std::size_t i = 0; i < answer.fillings; ++i) {
        if (!sendAll(connection.socket, answer.filling)) return false;
    }
    if (answer.hangs) return wait(3600);
    return !answer.closes && answer.cutAfter == std::string::npos && !answer.bytes.empty();
}

bool ScriptedHttpServer::wait(double seconds) {
    std::unique_lock lock(mutex_);
    return !stopped_.wait_for(lock, std::chrono::duration<double>(seconds), [this] { return stopping_; });
}

}  // namespace ostrel
