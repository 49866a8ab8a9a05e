#include "articleserver/http/HttpConnection.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/common/ServerText.h"

#include <arpa/inet.h>
#include <cerrno>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>

namespace articleserver {

namespace {

constexpr std::size_t receiveSize = 16 * 1024;
constexpr std::size_t receiveBodySize = 128 * 1024;
constexpr std::size_t drainedBytes = 8 * 1024 * 1024;
constexpr auto drainTime = std::chrono::seconds(1);
constexpr auto idleSlice = std::chrono::milliseconds(500);

bool isTokenCharacter(char character) {
    // RFC 9110, 5.6.2
    constexpr std::string_view marks = "!#$%&'*+-.^_`|~";
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') || marks.find(character) != std::string_view::npos;
}

bool isFieldCharacter(char character) {
    auto byte = static_cast<unsigned char>(character);
    return byte == '\t' || (byte >= 0x20 && byte != 0x7F);
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char character) {
        return character >= 'A' && character <= 'Z' ? static_cast<char>(character + ('a' - 'A')) : character;
    });
    return lower;
}

void addressOf(int (*query)(int, sockaddr*, socklen_t*), int socket, std::string& ip, int& port) {
    sockaddr_storage address{};
    socklen_t length = sizeof address;
    std::array<char, NI_MAXHOST> host{};
    std::array<char, NI_MAXSERV> service{};
    ip.clear();
    port = 0;
    auto* generic = reinterpret_cast<sockaddr*>(&address);
    if (query(socket, generic, &length) != 0) return;
    if (getnameinfo(generic, length, host.data(), host.size(), service.data(), service.size(),
                    NI_NUMERICHOST | NI_NUMERICSERV) == 0) {
        ip = host.data();
        port = static_cast<int>(decimalId(service.data()).value_or(0));
    }
}

}  // namespace

HttpConnection::HttpConnection(int socket, int stopEvent) : socket_(socket), stopEvent_(stopEvent) {
    deadline_ = Clock::now() + ServerLimits::headTime;
}

HttpConnection::Wait HttpConnection::wait(short events, Clock::time_point deadline) const {
    for (;;) {
        auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        if (left <= 0) return Wait::timedOut;
        std::array<pollfd, 2> watched{pollfd{socket_, events, 0}, pollfd{stopEvent_, POLLIN, 0}};
        int ready = ::poll(watched.data(), watched.size(), static_cast<int>(left));
        if (ready < 0 && errno == EINTR) continue;
        if (watched[1].revents != 0) return Wait::stopped;
        if (ready > 0) return Wait::ready;
        if (ready < 0) return Wait::timedOut;
    }
}

bool HttpConnection::receive(std::size_t most) {
    std::size_t size = buffer_.size();
    buffer_.resize(size + most);
    ssize_t count = ::recv(socket_, buffer_.data() + size, most, MSG_DONTWAIT);
    buffer_.resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return count > 0 || (count < 0 && (errno == EAGAIN || errno == EINTR));
}

bool HttpConnection::refuse(int status, std::string text) {
    refusalStatus_ = status;
    refusalText_ = std::move(text);
    return false;
}

HttpConnection::Head HttpConnection::receiveHead(const std::function<std::chrono::milliseconds()>& idleTime) {
    buffer_.erase(0, consumed_);
    consumed_ = 0;
    scanned_ = 0;
    lineScanned_ = 0;
    held_.clear();

    auto idleSince = Clock::now();
    while (buffer_.empty()) {
        auto now = Clock::now();
        auto idleEnd = idleSince + idleTime();
        if (now >= idleEnd) return Head::closed;
        Wait waited = wait(POLLIN, std::min(idleEnd, now + idleSlice));
        if (waited == Wait::stopped || (waited == Wait::ready && !receive(receiveSize))) return Head::closed;
    }

    deadline_ = Clock::now() + ServerLimits::headTime;
    for (;;) {
        std::size_t end = headEnd();
        if (refusalStatus_ != 0) return Head::refused;
        if (end != std::string::npos) return acceptHead(end) ? Head::ready : Head::refused;
        Wait waited = wait(POLLIN, deadline_);
        if (waited == Wait::timedOut) {
            refuse(408, "The request took too long.");
            return Head::refused;
        }
        if (waited == Wait::stopped || !receive(receiveSize)) return Head::closed;
    }
}

std::size_t HttpConnection::headEnd() {
    // A server ignores empty lines before a request line (RFC 9112, 2.2).
    std::size_t blank = 0;
    while (scanned_ == 0 && buffer_.compare(blank, 2, "\r\n") == 0) blank += 2;
    buffer_.erase(0, blank);

    std::size_t at = scanned_ >= 3 ? scanned_ - 3 : 0;
    std::size_t end = buffer_.find("\r\n\r\n", at);
    scanned_ = buffer_.size();
    std::size_t seen = std::min(buffer_.size(), end == std::string::npos ? end : end + 4);
    std::size_t lineEnd = buffer_.find("\r\n", lineScanned_);
    lineScanned_ = lineEnd == std::string::npos ? std::max<std::size_t>(buffer_.size(), 1) - 1 : lineEnd;
    if (std::min(lineEnd, seen) > ServerLimits::requestLine) {
        refuse(414, "The address of the request is too long.");
        return std::string::npos;
    }
    if (lineEnd < seen && seen - lineEnd > ServerLimits::head) {
        refuse(431, "The header of the request is too large.");
        return std::string::npos;
    }
    return end;
}

bool HttpConnection::acceptHead(std::size_t end) {
    contentLength_ = 0;
    hasContentLength_ = false;
    std::string_view rest(buffer_.data(), end);
    std::size_t lineEnd = std::min(rest.find("\r\n"), rest.size());
    std::string_view requestLine = rest.substr(0, lineEnd);
    if (!std::all_of(requestLine.begin(), requestLine.end(), isFieldCharacter)) {
        return refuse(400, "The request is not HTTP.");
    }
    // A caption can make the query longer than httplib allows, so the query does not go through httplib.
    const std::size_t question = std::min(requestLine.find('?'), requestLine.size());
    const std::size_t version = std::max(requestLine.rfind(' '), question);
    if (version == std::string_view::npos) return refuse(400, "The request is not HTTP.");
    std::string head(requestLine.substr(0, question));
    if (question < requestLine.size()) {
        held_.emplace(std::string(heldPrefix) + std::string(queryHeader),
                      std::string(requestLine.substr(question + 1, version - question - 1)));
        head += requestLine.substr(version);
    }
    if (head.size() > ServerLimits::requestPath) {
        return refuse(414, "The address of the request is too long.");
    }
    head += "\r\n";
    rest.remove_prefix(std::min(lineEnd + 2, rest.size()));
    for (std::size_t count = 0; !rest.empty(); ++count) {
        lineEnd = std::min(rest.find("\r\n"), rest.size());
        if (lineEnd > ServerLimits::headerLine || count == ServerLimits::headers) {
            return refuse(431, "The header of the request is too large.");
        }
        if (!acceptHeader(rest.substr(0, lineEnd), head)) return false;
        rest.remove_prefix(std::min(lineEnd + 2, rest.size()));
    }
    head += "\r\n";
    buffer_.replace(0, end + 4, head);
    unread_ = head.size() + contentLength_;
    // The bound on the length keeps the deadline within the clock's range. The service refuses longer bodies.
    constexpr std::uint64_t longest = std::uint64_t{1} << 40;
    deadline_ = Clock::now() + ServerLimits::bodyTime +
                std::chrono::seconds(std::min(contentLength_, longest) / ServerLimits::bodySpeed);
    return true;
}

bool HttpConnection::acceptHeader(std::string_view line, std::string& head) {
    std::size_t colon = line.find(':');
    // This also refuses a folded line (RFC 9112, 5.2), because its first character is a blank, no token
    // character.
    if (colon == std::string_view::npos || colon == 0 ||
        !std::all_of(line.begin(), line.begin() + static_cast<std::ptrdiff_t>(colon), isTokenCharacter) ||
        !std::all_of(line.begin(), line.end(), isFieldCharacter)) {
        return refuse(400, "The request is not HTTP.");
    }
    std::string name = lowerCase(line.substr(0, colon));
    std::string_view value = line.substr(colon + 1);
    while (!value.empty() && (value.front() == ' ' || value.front() == '\t')) value.remove_prefix(1);
    while (!value.empty() && (value.back() == ' ' || value.back() == '\t')) value.remove_suffix(1);

    if (name == "transfer-encoding") return refuse(411, "A body needs a Content-Length.");
    if (name == "content-encoding" && lowerCase(value) != "identity") {
        return refuse(415, "A body must not be compressed.");
    }
    if (name == "content-length") {
        auto length = decimalId(value);
        if (!length || hasContentLength_) return refuse(400, "The Content-Length is not valid.");
        hasContentLength_ = true;
        contentLength_ = static_cast<std::uint64_t>(*length);
    }
    // httplib does not limit forms and ranges enough, and it compresses answers slowly when a client allows
    // that.
    if (name == "content-type" || name == "range") {
        held_.emplace(std::string(heldPrefix) + name, std::string(value));
        return true;
    }
    if (name == "accept-encoding" || name == "content-encoding" || name.starts_with(heldPrefix)) return true;
    head += name + ": " + std::string(value) + "\r\n";
    return true;
}

void HttpConnection::finish() {
    ::shutdown(socket_, SHUT_WR);
    auto deadline = Clock::now() + drainTime;
    std::array<char, receiveSize> dropped{};
    for (std::size_t total = 0; total < drainedBytes;) {
        if (wait(POLLIN, deadline) != Wait::ready) return;
        ssize_t count = ::recv(socket_, dropped.data(), dropped.size(), MSG_DONTWAIT);
        if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR)) return;
        total += static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    }
}

bool HttpConnection::is_readable() const { return unread_ > 0; }

bool HttpConnection::is_writable() const {
    pollfd watched{socket_, POLLOUT, 0};
    return ::poll(&watched, 1, 0) > 0 && (watched.revents & (POLLERR | POLLHUP)) == 0;
}

ssize_t HttpConnection::read(char* bytes, size_t size) {
    if (unread_ == 0 || size == 0) return 0;
    if (consumed_ == buffer_.size()) {
        buffer_.clear();
        consumed_ = 0;
        auto stall = Clock::now() + ServerLimits::stallTime;
        const std::size_t most = unread_ > receiveSize ? receiveBodySize : receiveSize;
        if (wait(POLLIN, std::min(stall, deadline_)) != Wait::ready || !receive(most)) return -1;
        // A wake-up without a byte counts as a stall, so that this loop cannot spin.
        if (buffer_.empty()) return -1;
    }
    std::size_t count = std::min({size, buffer_.size() - consumed_, static_cast<std::size_t>(unread_)});
    std::copy_n(buffer_.data() + consumed_, count, bytes);
    consumed_ += count;
    unread_ -= count;
    return static_cast<ssize_t>(count);
}

ssize_t HttpConnection::write(const char* bytes, size_t size) {
    std::size_t sent = 0;
    while (sent < size) {
        ssize_t count = ::send(socket_, bytes + sent, size - sent, MSG_NOSIGNAL | MSG_DONTWAIT);
        if (count > 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno == EAGAIN) {
            // wait() also ends when the server stops: a slow client must not delay the stop.
            if (wait(POLLOUT, Clock::now() + ServerLimits::stallTime) != Wait::ready) return -1;
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<ssize_t>(size);
}

void HttpConnection::get_remote_ip_and_port(std::string& ip, int& port) const {
    addressOf(::getpeername, socket_, ip, port);
}

void HttpConnection::get_local_ip_and_port(std::string& ip, int& port) const {
    addressOf(::getsockname, socket_, ip, port);
}

}  // namespace articleserver
