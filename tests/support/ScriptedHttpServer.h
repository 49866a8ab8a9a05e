#pragma once

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace ostrel {

/// FNV-1a of 64 bits, to compare bodies too large to keep; pass the former result to go on.
std::uint64_t fingerprint(std::string_view bytes, std::uint64_t from = 14695981039346656037ULL);

/// A server on 127.0.0.1 that sends what a test wrote down, faults of every kind included: it writes raw bytes and
/// knows no more of HTTP than to find the end of a request. Listens as soon as it is made.
class ScriptedHttpServer final {
public:
    struct Request {
        std::string method;
        std::string target;
        /// Names in lower case.
        std::map<std::string, std::string> headers;
        /// The first 64 kilobytes of the body, its length and its fingerprint.
        std::string bodyBegin;
        std::size_t bodyBytes = 0;
        std::uint64_t bodyFingerprint = 0;
    };
    struct Answer {
        /// Sent as it stands; empty: the connection is closed without a byte.
        std::string bytes;
        /// Sent after `bytes`: so many times `filling`.
        std::string filling;
        std::size_t fillings = 0;
        /// Waits so long before the first byte.
        double delaySeconds = 0;
        /// The connection is closed after so many bytes of `bytes`.
        std::size_t cutAfter = std::string::npos;
        /// After the bytes nothing more comes, and the connection stays open.
        bool hangs = false;
        bool closes = false;
    };
    using Script = std::function<Answer(const Request&)>;

    ScriptedHttpServer();
    ~ScriptedHttpServer();
    ScriptedHttpServer(const ScriptedHttpServer&) = delete;
    ScriptedHttpServer& operator=(const ScriptedHttpServer&) = delete;

    /// A whole answer with a Content-Length.
    static Answer answer(std::string_view body, int status = 200, std::string_view headers = {});

    /// What is sent for `path` (a target without its query); others get 404. May be changed at any time.
    void on(std::string path, Answer answer);
    void on(std::string path, Script script);
    /// Answers as soon as the head of a request has arrived, and closes without reading its body.
    void refuseBody(std::string path, Answer answer);

    /// "http://127.0.0.1:PORT".
    std::string address() const;
    std::vector<Request> requests() const;
    std::size_t requestCount(std::string_view path) const;
    /// The most requests that were under way at the same time.
    int mostAtOnce() const { return mostAtOnce_; }
    int connectionCount() const { return connections_; }

private:
    struct Connection {
        int socket = -1;
        std::thread thread;
        /// Bytes that arrived behind the request under way.
        std::string pending;
    };

    void acceptConnections();
    void serve(Connection& connection);
    bool readHead(Connection& connection, Request& request);
    bool readBody(Connection& connection, Request& request);
    bool sendAnswer(Connection& connection, const Answer& answer);
    Answer answerFor(const Request& request);
    bool wait(double seconds);

    int listener_ = -1, port_ = 0;
    std::atomic<int> underWay_{0}, mostAtOnce_{0}, connections_{0};

    mutable std::mutex mutex_;
    std::condition_variable stopped_;
    bool stopping_ = false;                               // guarded by mutex_
    std::map<std::string, Script, std::less<>> scripts_;  // guarded by mutex_
    std::set<std::string> refused_;                       // guarded by mutex_
    std::vector<Request> requests_;                       // guarded by mutex_
    std::vector<std::unique_ptr<Connection>> open_;       // guarded by mutex_
    std::thread acceptor_;
};

}  // namespace ostrel
