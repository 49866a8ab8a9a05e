#pragma once

#include <httplib.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace articleserver {

/// One accepted socket, as the stream from which httplib reads requests and to which httplib writes answers.
/// The connection receives the whole head of a request itself, because httplib does not limit the size and
/// the time of a head; it checks the syntax of the head (RFC 9112) and gives httplib no byte beyond the body
/// of that request. It holds some headers back from httplib, which handles them with less care than this
/// server; see heldHeaders(). One thread of the pool owns and uses a connection.
class HttpConnection final : public httplib::Stream {
public:
    enum class Head { ready, closed, refused };

    /// `stopEvent` is a descriptor that becomes readable when the server stops. The caller closes the socket.
    HttpConnection(int socket, int stopEvent);

    /// Waits for a request and calls `idleTime` for the allowed time again and again while no byte has
    /// arrived. When the result is `refused`, the caller answers with refusalStatus() and refusalText() and
    /// closes.
    Head receiveHead(const std::function<std::chrono::milliseconds()>& idleTime);
    int refusalStatus() const { return refusalStatus_; }
    const std::string& refusalText() const { return refusalText_; }

    /// The prefix of the names of held headers. The connection drops client headers with this prefix.
    static constexpr std::string_view heldPrefix = "held-";
    /// The name, without the prefix, of the held header with the query of the address. An address without a
    /// query has no such header. No client header can have this name, because it contains blanks.
    static constexpr std::string_view queryHeader = "query of the address";
    /// "Content-Type", "Range" and the query of the current request, unchanged.
    const httplib::Headers& heldHeaders() const { return held_; }
    std::uint64_t contentLength() const { return contentLength_; }
    /// True while httplib has not read the whole request. The connection then cannot take another request.
    bool hasUnread() const { return unread_ > 0; }

    /// Shuts the sending side down and reads on for at most a second. Without that, a close with unread bytes
    /// resets the connection, and the client may lose the answer.
    void finish();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    /// Sends all bytes or fails.
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    using Clock = std::chrono::steady_clock;
    enum class Wait { ready, timedOut, stopped };

    Wait wait(short events, Clock::time_point deadline) const;
    /// Appends the bytes that have arrived, at most `most`, to buffer_; false at the end of the stream.
    bool receive(std::size_t most);
    /// The place of the end of the head in buffer_; npos while it has not arrived and after a refusal.
    std::size_t headEnd();
    bool acceptHead(std::size_t end);
    bool acceptHeader(std::string_view line, std::string& head);
    bool refuse(int status, std::string text);

    int socket_;
    int stopEvent_;
    std::string buffer_;
    /// The number of bytes of buffer_ that httplib has read.
    std::size_t consumed_ = 0;
    /// The number of bytes of buffer_ that headEnd() has searched for the end of the head.
    std::size_t scanned_ = 0;
    /// The place in buffer_ where headEnd() continues the search for the end of the request line.
    std::size_t lineScanned_ = 0;
    /// The number of bytes of the current request that httplib has not read.
    std::uint64_t unread_ = 0;
    std::uint64_t contentLength_ = 0;
    bool hasContentLength_ = false;
    Clock::time_point deadline_;
    httplib::Headers held_;
    int refusalStatus_ = 0;
    std::string refusalText_;
};

}  // namespace articleserver
