#pragma once

#include "articleserver/common/ServerResult.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace articleserver {

/// Receives the parts of a multipart body from a MultipartReader. A failure ends the reading.
class MultipartSink {
public:
    virtual ~MultipartSink() = default;
    /// `isFile`: the part has a file name. The reader ignores the file name itself.
    virtual ServerResult<void> beginPart(const std::string& name, bool isFile) = 0;
    /// The next bytes of the part that began with the latest beginPart().
    virtual ServerResult<void> content(std::string_view bytes) = 0;
};

/// Parses multipart/form-data (RFC 7578) from pieces of any size. The reader buffers at most one delimiter or
/// the headers of one part.
class MultipartReader final {
public:
    /// `contentType` is the header with the boundary. Without a valid boundary, take() refuses every body.
    MultipartReader(std::string_view contentType, MultipartSink& sink);

    ServerResult<void> take(std::string_view bytes);
    /// Refuses a body that ended before its last delimiter.
    ServerResult<void> finish() const;

private:
    enum class State { content, delimited, head, done };

    /// Each function handles as much of buffer_ as it can; true when the next state can continue.
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
