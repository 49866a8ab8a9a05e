#include "serverframework/http/HttpTransfer.h"

#include "serverframework/http/WebAddress.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <curl/curl.h>
#include <new>
#include <utility>

namespace ostrel {

/// A file of the body as libcurl reads it.
struct HttpTransfer::FilePart {
    HttpTransfer& transfer;
    const std::string& name;
    UploadFileReader& file;

    static std::size_t read(char* to, std::size_t size, std::size_t count, void* self) {
        auto& part = *static_cast<FilePart*>(self);
        const auto length = part.file.read(to, size * count);
        if (length) return *length;
        part.transfer.ownError_ = "The file \"" + part.name + "\" changed while it was sent.";
        return CURL_READFUNC_ABORT;
    }
    static int seek(void* self, curl_off_t offset, int origin) {
        auto& file = static_cast<FilePart*>(self)->file;
        if (origin != SEEK_SET || offset < 0 || static_cast<std::size_t>(offset) > file.size()) {
            return CURL_SEEKFUNC_FAIL;
        }
        file.rewind(static_cast<std::size_t>(offset));
        return CURL_SEEKFUNC_OK;
    }
};

namespace {

std::string sizeText(std::size_t bytes) {
    constexpr std::size_t mebibyte = std::size_t{1024} * 1024;
    if (bytes >= mebibyte && bytes % mebibyte == 0) return std::to_string(bytes / mebibyte) + " MiB";
    return std::to_string(bytes) + " bytes";
}

bool endsWith(std::string_view text, std::string_view end) {
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

const char* contentTypeOf(std::string_view fileName) {
    if (endsWith(fileName, ".jpg") || endsWith(fileName, ".jpeg")) return "image/jpeg";
    if (endsWith(fileName, ".png")) return "image/png";
    if (endsWith(fileName, ".mp4")) return "video/mp4";
    return "application/octet-stream";
}

std::string_view trimmed(std::string_view text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
    return text;
}

/// The value of the header `name` (in lower case) when `line` is that header. The case of header names does not matter
/// (RFC 9110, section 5.1).
std::optional<std::string_view> headerValue(std::string_view line, std::string_view name) {
    if (line.size() <= name.size() || line[name.size()] != ':') return std::nullopt;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = line[i];
        if ((c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c) != name[i]) return std::nullopt;
    }
    return trimmed(line.substr(name.size() + 1));
}

bool isRedirect(long status) {
    return status == 301 || status == 302 || status == 303 || status == 307 || status == 308;
}

}  // namespace

std::string statusSentence(const HttpAnswer& answer) {
    return "HTTP " + std::to_string(answer.status) + (answer.reason.empty() ? "" : " " + answer.reason);
}

HttpTransfer::HttpTransfer(std::uint64_t id, HttpRequest request, HttpCompletion completion,
                           const TransportLimits& limits)
    : id_(id), request_(std::move(request)), completion_(std::move(completion)), limits_(limits) {}

HttpTransfer::~HttpTransfer() {
    assert(!completion_);
    // Destroyed first, because the handle refers to the body and the header lines.
    if (handle_) curl_easy_cleanup(handle_);
    curl_mime_free(static_cast<curl_mime*>(mime_));
    curl_slist_free_all(static_cast<curl_slist*>(headers_));
}

void* HttpTransfer::prepare() {
    CURL* handle = curl_easy_init();
    handle_ = handle;
    if (!handle) {
        ownError_ = "There is not enough memory for the request.";
        return nullptr;
    }
    curl_easy_setopt(handle, CURLOPT_URL, request_.address.c_str());
    curl_easy_setopt(handle, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(handle, CURLOPT_PRIVATE, this);
    curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);
    // Ending a request must not block on a name look-up that hangs.
    curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L);
    curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(handle, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_2TLS));
    curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits_.connectTimeoutSeconds * 1000));
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_LIMIT, static_cast<long>(request_.minimumSpeed));
    curl_easy_setopt(handle, CURLOPT_LOW_SPEED_TIME, static_cast<long>(limits_.stallTimeoutSeconds));
    curl_easy_setopt(handle, CURLOPT_TIMEOUT_MS, static_cast<long>(request_.maximumSeconds * 1000));
    curl_easy_setopt(handle, CURLOPT_TCP_KEEPALIVE, 1L);
    curl_easy_setopt(handle, CURLOPT_UPLOAD_BUFFERSIZE, static_cast<long>(limits_.uploadBufferBytes));
    curl_easy_setopt(handle, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(request_.maximumBytes));
    curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, &HttpTransfer::writeBody);
    curl_easy_setopt(handle, CURLOPT_WRITEDATA, this);
    curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, &HttpTransfer::readHeader);
    curl_easy_setopt(handle, CURLOPT_HEADERDATA, this);
    if (!request_.usesProxy) curl_easy_setopt(handle, CURLOPT_PROXY, "");
    if (request_.takesCompressed) curl_easy_setopt(handle, CURLOPT_ACCEPT_ENCODING, "");
    if (!request_.userAgent.empty()) curl_easy_setopt(handle, CURLOPT_USERAGENT, request_.userAgent.c_str());
    if (request_.cookies) {
        curl_easy_setopt(handle, CURLOPT_SHARE, request_.cookies->shareHandle());
        curl_easy_setopt(handle, CURLOPT_COOKIEFILE, "");
    }
    curl_slist* headers = nullptr;
    for (const std::string& line : request_.headers) {
        curl_slist* longer = curl_slist_append(headers, line.c_str());
        if (longer) headers = longer;
    }
    headers_ = headers;
    if (headers) curl_easy_setopt(handle, CURLOPT_HTTPHEADER, headers);
    if (request_.progress) {
        curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, &HttpTransfer::reportProgress);
        curl_easy_setopt(handle, CURLOPT_XFERINFODATA, this);
        curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
    }
    return addBody() ? handle : nullptr;
}

bool HttpTransfer::addBody() {
    if (request_.form) {
        curl_easy_setopt(handle_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request_.form->size()));
        curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, request_.form->c_str());
        return true;
    }
    if (!request_.upload) return true;
    curl_mime* mime = curl_mime_init(handle_);
    mime_ = mime;
    bool complete = mime != nullptr;
    for (const PreparedUpload::Part& content : request_.upload->parts) {
        curl_mimepart* part = complete ? curl_mime_addpart(mime) : nullptr;
        complete = part && curl_mime_name(part, content.name.c_str()) == CURLE_OK;
        if (!complete) break;
        if (!content.file) {
            complete = curl_mime_data(part, content.text.data(), content.text.size()) == CURLE_OK;
            continue;
        }
        // RFC 7578, section 4.2: a file name with characters beyond ASCII is sent as its UTF-8 bytes.
        auto& file = fileParts_.emplace_back(std::make_unique<FilePart>(*this, content.name, *content.file));
        complete = curl_mime_filename(part, content.name.c_str()) == CURLE_OK &&
                   curl_mime_type(part, contentTypeOf(content.name)) == CURLE_OK &&
                   curl_mime_data_cb(part, static_cast<curl_off_t>(content.file->size()), &FilePart::read,
                                     &FilePart::seek, nullptr, file.get()) == CURLE_OK;
    }
    if (!complete) {
        ownError_ = "There is not enough memory for the request.";
        return false;
    }
    curl_easy_setopt(handle_, CURLOPT_MIMEPOST, mime);
    return true;
}

void HttpTransfer::dropBody() {
    curl_easy_setopt(handle_, CURLOPT_MIMEPOST, nullptr);
    curl_easy_setopt(handle_, CURLOPT_POSTFIELDS, nullptr);
    curl_easy_setopt(handle_, CURLOPT_HTTPGET, 1L);
    curl_mime_free(static_cast<curl_mime*>(mime_));
    mime_ = nullptr;
    fileParts_.clear();
    request_.form.reset();
    request_.upload.reset();
}

std::size_t HttpTransfer::writeBody(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    const std::size_t length = size * count;
    if (transfer.request_.sink) return transfer.writeToSink({bytes, length}) ? length : 0;
    std::string& body = transfer.answer_.body;
    if (length > transfer.request_.maximumBytes - body.size()) {
        transfer.ownError_ = "The answer is larger than " + sizeText(transfer.request_.maximumBytes) + ".";
        return 0;
    }
    try {
        if (body.empty()) {
            // The announced length is reserved at once; pages that are never written cost no memory.
            curl_off_t announced = -1;
            curl_easy_getinfo(transfer.handle_, CURLINFO_CONTENT_LENGTH_DOWNLOAD_T, &announced);
            const auto most = static_cast<curl_off_t>(transfer.request_.maximumBytes);
            if (announced > 0) body.reserve(static_cast<std::size_t>(std::min(announced, most)));
        }
        body.append(bytes, length);
    } catch (const std::bad_alloc&) {
        transfer.ownError_ = "There is not enough memory for the answer.";
        return 0;
    }
    return length;
}

bool HttpTransfer::writeToSink(std::string_view bytes) {
    long status = 0;
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    const bool isWanted = status >= 200 && status < 300;
    const std::size_t most = isWanted ? request_.maximumBytes : limits_.maximumRefusalBytes;
    if (bytes.size() > most - std::min(sinkBytes_, most)) {
        ownError_ = "The answer is larger than " + sizeText(most) + ".";
        return false;
    }
    sinkBytes_ += bytes.size();
    if (!isWanted || request_.sink->write(bytes)) return true;
    ownError_ = request_.sink->failure();
    return false;
}

std::size_t HttpTransfer::readHeader(char* bytes, std::size_t size, std::size_t count, void* self) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    const std::string_view line(bytes, size * count);
    transfer.headerBytes_ += line.size();
    if (transfer.headerBytes_ > transfer.limits_.maximumHeaderBytes) {
        transfer.ownError_ =
            "The header of the answer is larger than " + sizeText(transfer.limits_.maximumHeaderBytes) + ".";
        return 0;
    }
    HttpAnswer& answer = transfer.answer_;
    transfer.hasWholeHead_ = trimmed(line).empty();
    if (line.substr(0, 5) == "HTTP/") {
        // As in "HTTP/1.1 404 Not Found"; HTTP/2 has no reason phrase.
        const std::string_view text = trimmed(line);
        const std::size_t status = text.find(' ');
        const std::size_t reason = status == std::string_view::npos ? status : text.find(' ', status + 1);
        answer.reason = reason == std::string_view::npos ? "" : trimmed(text.substr(reason).substr(0, 100));
        std::erase_if(answer.reason, [](char c) { return c < 0x20 || c > 0x7e; });
        // The headers of a 1xx answer that came before this one do not count.
        answer.entityTag.clear();
        for (std::string* header : {&answer.lastModified, &answer.cacheControl, &answer.expires, &answer.date,
                                    &answer.age, &answer.vary, &answer.contentType}) {
            header->clear();
        }
    } else if (const auto tag = headerValue(line, "etag")) {
        answer.entityTag = *tag;
    } else if (headerValue(line, "set-cookie")) {
        answer.setsCookies = true;
    } else {
        transfer.readCachingHeader(line);
    }
    return line.size();
}

void HttpTransfer::readCachingHeader(std::string_view line) {
    const auto add = [&](std::string_view name, std::string& to) {
        const auto value = headerValue(line, name);
        if (!value) return;
        if (!to.empty()) to += ", ";
        to += *value;
    };
    add("last-modified", answer_.lastModified);
    add("cache-control", answer_.cacheControl);
    add("expires", answer_.expires);
    add("date", answer_.date);
    add("age", answer_.age);
    add("vary", answer_.vary);
    add("content-type", answer_.contentType);
}

int HttpTransfer::reportProgress(void* self, std::int64_t, std::int64_t, std::int64_t total, std::int64_t sent) {
    auto& transfer = *static_cast<HttpTransfer*>(self);
    // The last step, 1, is reported when the answer confirms that the whole body arrived, not when the last byte was
    // sent.
    transfer.hasSentAll_ = total > 0 && sent >= total;
    if (total <= 0 || transfer.hasSentAll_) return 0;
    const double fraction = static_cast<double>(sent) / static_cast<double>(total);
    const auto now = std::chrono::steady_clock::now();
    const std::chrono::duration<double> passed = now - transfer.reportedAt_;
    if (fraction <= transfer.reported_ || passed.count() < 1 / transfer.limits_.progressPerSecond) return 0;
    transfer.reported_ = fraction;
    transfer.reportedAt_ = now;
    transfer.request_.progress(fraction);
    return 0;
}

bool HttpTransfer::redirect(int result) {
    long status = 0;
    char* target = nullptr;
    curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &status);
    curl_easy_getinfo(handle_, CURLINFO_REDIRECT_URL, &target);
    if (result != CURLE_OK || !isRedirect(status) || !target) return false;
    if (redirects_ >= limits_.maximumRedirects) {
        ownError_ = "The server redirects more than " + std::to_string(limits_.maximumRedirects) + " times.";
        return false;
    }
    const auto from = originOfAddress(request_.address);
    if (!from || originOfAddress(target) != from) {
        ownError_ = "The server redirects to another server.";
        return false;
    }
    ++redirects_;
    request_.address = target;
    const bool setsCookies = answer_.setsCookies;
    answer_ = {};
    sinkBytes_ = 0;
    answer_.setsCookies = setsCookies;
    // RFC 9110, section 15.4: 307 and 308 repeat the request; after other redirects a POST becomes a GET.
    if (status != 307 && status != 308) dropBody();
    curl_easy_setopt(handle_, CURLOPT_URL, request_.address.c_str());
    return true;
}

std::string HttpTransfer::sentenceFor(int result) const {
    switch (result) {
    case CURLE_OK: return {};
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
    case CURLE_COULDNT_CONNECT: return "The server cannot be reached.";
    case CURLE_OPERATION_TIMEDOUT: {
        curl_off_t connected = 0;
        curl_easy_getinfo(handle_, CURLINFO_PRETRANSFER_TIME_T, &connected);
        return connected > 0 ? "The server stopped answering." : "The server cannot be reached.";
    }
    case CURLE_SSL_CONNECT_ERROR:
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CERTPROBLEM:
    case CURLE_SSL_CIPHER:
    case CURLE_SSL_CACERT_BADFILE:
    case CURLE_SSL_ISSUER_ERROR:
    case CURLE_SSL_INVALIDCERTSTATUS:
    case CURLE_SSL_PINNEDPUBKEYNOTMATCH:
        return std::string("No secure connection to the server: ") + curl_easy_strerror(static_cast<CURLcode>(result)) +
               ".";
    case CURLE_GOT_NOTHING: return "The server closed the connection without an answer.";
    case CURLE_SEND_ERROR: return "The connection to the server was lost.";
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_BAD_CONTENT_ENCODING:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
        return answer_.status == 0 ? "The connection to the server was lost."
                                   : "The answer of the server was cut short.";
    case CURLE_UNSUPPORTED_PROTOCOL:
    case CURLE_WEIRD_SERVER_REPLY: return "The server does not answer as a web server does.";
    case CURLE_FILESIZE_EXCEEDED: return "The answer is larger than " + sizeText(request_.maximumBytes) + ".";
    case CURLE_OUT_OF_MEMORY: return "There is not enough memory for the request.";
    case CURLE_URL_MALFORMAT: return "The address is not valid.";
    default: return std::string("The request failed: ") + curl_easy_strerror(static_cast<CURLcode>(result)) + ".";
    }
}

void HttpTransfer::finish(int result) {
    if (handle_) curl_easy_getinfo(handle_, CURLINFO_RESPONSE_CODE, &answer_.status);
    if (ownError_.empty() && result == CURLE_OK && !hasWholeHead_)
        ownError_ = "The answer of the server was cut short.";
    answer_.error = ownError_.empty() ? sentenceFor(result) : ownError_;
    complete();
}

void HttpTransfer::finishCancelled() {
    answer_.cancelled = true;
    answer_.error = cancelledText;
    complete();
}

void HttpTransfer::complete() {
    assert(completion_);
    if (answer_.error.empty() && hasSentAll_ && request_.progress) request_.progress(1);
    const HttpCompletion completion = std::exchange(completion_, nullptr);
    completion(std::move(answer_));
}

}  // namespace ostrel
