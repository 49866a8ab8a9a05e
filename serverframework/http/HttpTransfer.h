#pragma once

#include "article/server/OstrelServer.h"
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

/// What the transport itself allows, whatever is asked for.
struct TransportLimits {
    double connectTimeoutSeconds = 10;
    /// A transfer that moves less than a byte a second for so long is given up. There is no bound on its whole time.
    int stallTimeoutSeconds = 30;
    int connectionsPerHost = 8;
    int connections = 24;
    std::size_t maximumHeaderBytes = std::size_t{256} * 1024;
    int maximumRedirects = 5;
    std::size_t uploadBufferBytes = std::size_t{256} * 1024;
    double progressPerSecond = 60;
};

/// Takes the body of a successful answer instead of `HttpAnswer::body`, for what may be large. Network thread.
class BodySink {
public:
    virtual ~BodySink() = default;
    /// The next bytes, in order. False ends the transfer; `failure` then says why.
    virtual bool write(std::string_view bytes) = 0;
    virtual const std::string& failure() const = 0;
};

/// One request to be made: GET, or POST when there is a form or an upload.
struct HttpRequest {
    /// Absolute, http or https.
    std::string address;
    /// Whole lines, such as "Accept: application/json".
    std::vector<std::string> headers;
    std::string userAgent;
    /// The cookies to send and to keep; null: neither.
    std::shared_ptr<CookieJar> cookies;
    /// A body of the type application/x-www-form-urlencoded, encoded already.
    std::optional<std::string> form;
    /// A body of the type multipart/form-data. Its files are read while they are sent, by this request alone.
    std::shared_ptr<PreparedUpload> upload;
    std::size_t maximumBytes = 0;
    /// Where the body of an answer with a status of 200 to 299 goes; the bodies of others are then dropped. Null: the
    /// body goes into the answer.
    std::shared_ptr<BodySink> sink;
    /// A transfer that is slower than this for the stall time-out is given up, in bytes a second.
    int minimumSpeed = 1;
    /// For the whole transfer; 0: no bound.
    double maximumSeconds = 0;
    bool takesCompressed = false;
    bool usesProxy = true;
    /// The fraction of the body sent, never falling, at most `progressPerSecond` times; 1 once, with the answer, when all
    /// of it was. Network thread.
    ProgressHandler progress;
};

/// What became of a request. `error` is empty when the transfer itself went well, whatever the status says.
struct HttpAnswer {
    std::string error;
    bool cancelled = false;
    /// 0 when no status line arrived.
    long status = 0;
    /// Printable ASCII; empty when the server gave none.
    std::string reason;
    /// What arrived of the body, also beside an error.
    std::string body;
    std::string entityTag;
    /// Headers that decide for how long an answer may be kept (RFC 9111), as they stand; several Cache-Control lines
    /// are one list.
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

/// The text every handler gets for a request that was cancelled or overtaken by the end of the framework.
inline constexpr const char* cancelledText = "cancelled";

/// One request under way: its handle of libcurl, the body it sends and the answer it gathers. Network thread, except
/// for construction.
class HttpTransfer final {
public:
    HttpTransfer(std::uint64_t id, HttpRequest request, HttpCompletion completion,
                 const TransportLimits& limits);
    ~HttpTransfer();
    HttpTransfer(const HttpTransfer&) = delete;
    HttpTransfer& operator=(const HttpTransfer&) = delete;

    std::uint64_t id() const { return id_; }
    /// A CURL*, set up; null when the request cannot be made (then `finish` says why).
    void* prepare();
    void* handle() const { return handle_; }

    /// Whether the answer that just ended sends the request elsewhere, within the same origin and the limits. Then the
    /// handle has been set up anew. `result` is the CURLcode of the transfer.
    bool redirect(int result);
    /// Calls the completion with what `result` and the answer say. Once.
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
    /// A failure found by this object, which libcurl only knows as an abort.
    std::string ownError_;
    std::size_t headerBytes_ = 0;
    /// The empty line after the headers has arrived. libcurl takes a head that breaks off for a whole answer.
    bool hasWholeHead_ = false;
    /// Of the body, when it goes to the sink.
    std::size_t sinkBytes_ = 0;
    int redirects_ = 0;
    double reported_ = -1;
    /// All of the body has left.
    bool hasSentAll_ = false;
    std::chrono::steady_clock::time_point reportedAt_;
};

}  // namespace ostrel
