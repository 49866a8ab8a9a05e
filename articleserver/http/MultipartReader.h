#pragma once

#include "articleserver/common/ServerResult.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace articleserver {

/// What becomes of the parts of a multipart body. A failure ends the reading.
class MultipartSink {
public:
    virtual ~MultipartSink() = default;
    /// `isFile`: the part has a file name, which nothing is done with.
    virtual ServerResult<ServerDone> beginPart(const std::string& name, bool isFile) = 0;
    /// The next bytes of the part that began last.
    virtual ServerResult<ServerDone> content(std::string_view bytes) = 0;
};

/// Reads multipart/form-data (RFC 7578) in pieces of any size, keeping no more than a delimiter or the headers of a part.
class MultipartReader final {
public:
    /// `contentType` is the header with the boundary; without a valid one everything is refused.
    MultipartReader(std::string_view contentType, MultipartSink& sink);

    ServerResult<ServerDone> take(std::string_view bytes);
    /// Refuses a body that ended before its last delimiter.
    ServerResult<ServerDone> finish() const;

private:
    enum class State { content, delimited, head, done };

    /// Each handles what it can of buffer_; true when the next state may go on.
    ServerResult<bool> readContent();
    ServerResult<bool> readDelimiterEnd();
    ServerResult<bool> readHead();

    MultipartSink& sink_;
    std::string delimiter_;
    std::string buffer_;
    State state_ = State::content;
    bool isInPart_ = false;
    std::size_t parts_ = 0;
};

}  // namespace articleserver
