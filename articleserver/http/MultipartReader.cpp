#include "articleserver/http/MultipartReader.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/http/WebMessage.h"

#include <algorithm>

namespace articleserver {

namespace {

ServerFailure brokenMultipart() { return {ServerFault::badInput, "The multipart body is broken."}; }

bool isDisposition(std::string_view line) {
    constexpr std::string_view name = "content-disposition:";
    return line.size() >= name.size() &&
           std::equal(name.begin(), name.end(), line.begin(), [](char wanted, char found) {
               return wanted == (found >= 'A' && found <= 'Z' ? static_cast<char>(found - 'A' + 'a') : found);
           });
}

}  // namespace

MultipartReader::MultipartReader(std::string_view contentType, MultipartSink& sink) : sink_(sink) {
    auto boundary = headerParameter(contentType, "boundary");
    // A boundary has 1 to 70 characters (RFC 2046, 5.1.1).
    if (!boundary || boundary->empty() || boundary->size() > 70) return;
    delimiter_ = "\r\n--" + *boundary;
    // The body may begin with the first delimiter, which then lacks the line break in front of it.
    buffer_ = "\r\n";
}

ServerResult<void> MultipartReader::take(std::string_view bytes) {
    if (delimiter_.empty()) {
        return ServerFailure{ServerFault::badInput, "The multipart body has no valid boundary."};
    }
    if (state_ == State::done) return {};
    buffer_.append(bytes);
    for (;;) {
        auto goesOn = state_ == State::content     ? readContent()
                      : state_ == State::delimited ? readDelimiterEnd()
                                                   : readHead();
        if (!goesOn) return goesOn.failure();
        if (!*goesOn || state_ == State::done) return {};
    }
}

ServerResult<void> MultipartReader::finish() const {
    if (state_ != State::done) return brokenMultipart();
    return {};
}

ServerResult<bool> MultipartReader::readContent() {
    const std::size_t at = buffer_.find(delimiter_);
    const bool isEnd = at != std::string::npos;
    // The last bytes of the buffer may be the beginning of a delimiter, so they stay in the buffer.
    const std::size_t length = isEnd ? at : buffer_.size() - std::min(buffer_.size(), delimiter_.size() - 1);
    if (isInPart_ && length > 0) {
        auto taken = sink_.content(std::string_view(buffer_).substr(0, length));
        if (!taken) return taken.failure();
    }
    buffer_.erase(0, isEnd ? at + delimiter_.size() : length);
    if (isEnd) state_ = State::delimited;
    return isEnd;
}

ServerResult<bool> MultipartReader::readDelimiterEnd() {
    if (buffer_.size() < 2) return false;
    if (buffer_.starts_with("--")) {
        state_ = State::done;
        buffer_.clear();
        return true;
    }
    if (!buffer_.starts_with("\r\n")) return brokenMultipart();
    if (++parts_ > ServerLimits::multipartParts) {
        return ServerFailure{ServerFault::badInput, "The multipart body has too many parts."};
    }
    buffer_.erase(0, 2);
    state_ = State::head;
    return true;
}

ServerResult<bool> MultipartReader::readHead() {
    const std::size_t end = std::string_view(buffer_).substr(0, ServerLimits::multipartHeader + 4).find("\r\n\r\n");
    if (end == std::string::npos) {
        if (buffer_.size() >= ServerLimits::multipartHeader + 4) return brokenMultipart();
        return false;
    }
    std::string name;
    bool isNamed = false;
    bool isFile = false;
    std::string_view rest = std::string_view(buffer_).substr(0, end + 2);
    while (!rest.empty()) {
        const std::size_t lineEnd = rest.find("\r\n");
        const std::string_view line = rest.substr(0, lineEnd);
        rest.remove_prefix(lineEnd + 2);
        if (!isDisposition(line)) continue;
        if (auto given = headerParameter(line, "name")) {
            name = *given;
            isNamed = true;
        }
        isFile = headerParameter(line, "filename").has_value();
    }
    if (!isNamed || !isValidText(name)) return brokenMultipart();
    buffer_.erase(0, end + 4);
    state_ = State::content;
    isInPart_ = true;
    auto begun = sink_.beginPart(name, isFile);
    if (!begun) return begun.failure();
    return true;
}

}  // namespace articleserver
