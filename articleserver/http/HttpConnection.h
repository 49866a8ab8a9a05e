#pragma once

#include <httplib.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace articleserver {

/// One accepted socket, as the stream that httplib reads requests from and writes answers to. It receives
/// the whole head of a request itself, within limits of size and time that httplib lacks, checks its form
/// (RFC 9112) and lets httplib read no byte beyond that request's body. Some headers are kept back from
/// httplib, which would act on them with less care than the server does; see heldHeaders().
/// Owned and used by one thread of the pool.
class HttpConnection final : public httplib::Stream {
public:
    enum class Head { ready, closed, refused };

    /// `stopEvent` is a descriptor that becomes readable when the server stops. The socket is not owned.
    HttpConnection(int socket, int stopEvent);

    /// Waits for a request. `idleTime` is asked again while nothing has come. On Refused, refusalStatus()
    /// and refusalText() say what to answer before closing.
    Head receiveHead(const std::function<std::chrono::milliseconds()>& idleTime);
    int refusalStatus() const { return refusalStatus_; }
    const std::string& refusalText() const { return refusalText_; }

    /// In front of the names of held headers; no header of a client comes through under such a name.
    static constexpr std::string_view heldPrefix = "held-";
    /// The name, without the prefix, under which the query of the address is held; no query: no header. A client's own
    /// header of that name is dropped.
    static constexpr std::string_view queryHeader = "query of the address";
    /// "Content-Type", "Range" and the query of the current request, as they came.
    const httplib::Headers& heldHeaders() const { return held_; }
    std::uint64_t contentLength() const { return contentLength_; }
    /// True while bytes of the request have not been read; such a connection cannot be used again.
    bool hasUnread() const { return unread_ > 0; }

    /// Ends the sending side and waits a moment for the client to read, so that closing with unread bytes
    /// does not take the answer from it.
    void finish();

    bool is_readable() const override;
    bool is_writable() const override;
    ssize_t read(char* bytes, size_t size) override;
    /// Sends all or fails.
    ssize_t write(const char* bytes, size_t size) override;
    void get_remote_ip_and_port(std::string& ip, int& port) const override;
    void get_local_ip_and_port(std::string& ip, int& port) const override;
    socket_t socket() const override { return socket_; }

private:
    using Clock = std::chrono::steady_clock;
    enum class Wait { ready, timedOut, stopped };

    Wait wait(short events, Clock::time_point deadline) const;
    /// Appends what has arrived, at most so many bytes, to buffer_; false at the end of the stream.
    bool receive(std::size_t most);
    /// Finds the end of the head in buffer_; npos while it is not there, or with a refusal set.
    std::size_t headEnd();
    bool acceptHead(std::size_t end);
    bool acceptHeader(std::string_view line, std::string& head);
    bool refuse(int status, std::string text);

    int socket_;
    int stopEvent_;
    std::string buffer_;
    std::size_t consumed_ = 0;     ///< bytes of buffer_ that were handed out
    std::size_t scanned_ = 0;      ///< bytes of buffer_ that headEnd() has seen
    std::size_t lineScanned_ = 0;  ///< where its search for the end of the request line goes on
    std::uint64_t unread_ = 0;     ///< bytes of the current request not yet handed out
    std::uint64_t contentLength_ = 0;
    bool hasContentLength_ = false;
    Clock::time_point deadline_;
    httplib::Headers held_;
    int refusalStatus_ = 0;
    std::string refusalText_;
};

}  // namespace articleserver
