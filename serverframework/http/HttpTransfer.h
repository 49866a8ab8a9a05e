#pragma once

#include "article/server/OstrelServer.h"
#include "serverframework/http/ClientLimits.h"
#include "serverframework/http/CookieJar.h"
#include "serverframework/http/PreparedUpload.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// Takes the body of a successful answer that may be too large for `HttpAnswer::body`. Network thread.
class BodySink {
public:
    virtual ~BodySink() = default;
    /// Takes the next bytes, in order. False ends the transfer; `failure` then says why.
    virtual bool write(std::string_view bytes) = 0;
    virtual const std::string& failure() const = 0;
};

/// A request to make: GET, or POST when it has a form or an upload.
struct HttpRequest {
    /// Absolute, http or https.
    std::string address;
    /// Whole lines, such as "Accept: application/json".
    std::vector<std::string> headers;
    std::string userAgent;
    /// The jar whose cookies are sent and which keeps those of the answer. Null: no cookies are sent or kept.
    std::shared_ptr<CookieJar> cookies;
    /// A body of the type application/x-www-form-urlencoded, already encoded.
    std::optional<std::string> form;
    /// A body of the type multipart/form-data. This request reads its files while it sends them; no other request may.
    std::shared_ptr<PreparedUpload> upload;
    /// Of the answer's body.
    std::size_t maximumBytes = 0;
    /// Takes the body of an answer with a status of 200 to 299; bodies of other answers are then dropped. Null:
    /// `HttpAnswer::body` takes every body.
    std::shared_ptr<BodySink> sink;
    /// Bytes a second. A transfer that is slower for the whole stall time-out is given up.
    int minimumSpeed = 1;
    /// Bounds the whole transfer; 0: no bound.
    double maximumSeconds = 0;
    bool takesCompressed = false;
    bool usesProxy = true;
    /// Gets the fraction of the body that was sent, which never falls, at most `progressPerSecond` times a second. Gets
    /// 1 once, when the answer has arrived and the whole body was sent. Network thread.
    ProgressHandler progress;
};

/// The outcome of a request. `error` is empty when the transfer itself succeeded, whatever the status is.
struct HttpAnswer {
    std::string error;
    bool cancelled = false;
    /// The status code; 0 when no status line arrived.
    long status = 0;
    /// The reason phrase in printable ASCII; empty when the server sent none.
    std::string reason;
    /// The part of the body that arrived, even when there is an error.
    std::string body;
    std::string entityTag;
    /// The headers that decide for how long an answer may be kept (RFC 9111), unchanged. Several lines of one header
    /// are joined to a list.
    std::string lastModified;
    std::string cacheControl;
    std::string expires;
    std::string date;
    std::string age;
    std::string vary;
    std::string contentType;
    bool setsCookies = false;
};

using HttpCompletion = std::function<void(HttpAnswer)>;

/// "HTTP 500 Internal Server Error".
std::string statusSentence(const HttpAnswer& answer);

/// The error of a request that was cancelled, by its caller or because the framework was destroyed.
inline constexpr const char* cancelledText = "cancelled";

/// One request that is being made: its handle of libcurl, the body that it sends and the answer that it gathers.
/// Network thread, except for construction.
class HttpTransfer final {
public:
    HttpTransfer(std::uint64_t id, HttpRequest request, HttpCompletion completion, const TransportLimits& limits);
    ~HttpTransfer();
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;

    std::uint64_t id() const { return id_; }
    /// Sets up a CURL* and returns it; null when the request cannot be made, for which `finish` then reports the
    /// reason.
    void* prepare();
    void* handle() const { return handle_; }

    /// True when the answer that has ended redirects the request within its origin and the limits; the handle is then
    /// set up for the new address. `result` is the CURLcode of the transfer.
    bool redirect(int result);
    /// Calls the completion with the answer and the error for `result`, a CURLcode. Once.
    void finish(int result);
    void finishCancelled();

private:
    struct FilePart;
    bool writeToSink(std::string_view bytes);
    void readCachingHeader(std::string_view line);
    static std::size_t writeBody(char* bytes, std::size_t size, std::size_t count, void* self);
    static std::size_t readHeader(char* bytes, std::size_t size, std::size_t count, void* self);
    static int reportProgress(void* self, std::int64_t, std::int64_t, std::int64_t total, std::int64_t sent);

    bool addBody();
    void dropBody();
    void complete();
    std::string sentenceFor(int result) const;

    const std::uint64_t id_;
    HttpRequest request_;
    HttpCompletion completion_;
    const TransportLimits limits_;

    void* handle_ = nullptr;
    void* headers_ = nullptr;
    void* mime_ = nullptr;
    std::vector<std::unique_ptr<FilePart>> fileParts_;

    HttpAnswer answer_;
    /// The sentence for a failure that this object found and that libcurl only knows as an abort.
    std::string ownError_;
    std::size_t headerBytes_ = 0;
    /// True once the empty line after the headers has arrived. libcurl takes an answer whose head is cut short for a
    /// whole one.
    bool hasWholeHead_ = false;
    /// The bytes that went to the sink or, of a refusal, were dropped.
    std::size_t sinkBytes_ = 0;
    int redirects_ = 0;
    /// The fraction that was reported last; below 0 when there was none.
    double reported_ = -1;
    /// True when the whole body of the request was sent.
    bool hasSentAll_ = false;
    std::chrono::steady_clock::time_point reportedAt_;
};

}  // namespace ostrel
