#pragma once

#include "platform/foundation/resources/PartialFile.h"
#include "platform/foundation/values/Data.h"
#include "serverframework/http/ClientLimits.h"
#include "serverframework/http/HttpTransfer.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace ostrel {

/// Gathers the body of a medium: a small body in memory, a larger one in a file, so that memory stays bounded whatever
/// a server sends. One thread at a time.
class MediumBody final : public BodySink {
public:
    using OpenFile = std::function<std::optional<PartialFile>()>;

    MediumBody(MediaLimits limits, OpenFile openFile) : limits_(limits), openFile_(std::move(openFile)) {}

    bool write(std::string_view bytes) override;
    const std::string& failure() const override { return failure_; }

    /// The whole body, after the last `write`. Null when the body cannot be read; `failure` then says why. A large body
    /// is its mapped file, whose bytes must not be overwritten as long as the data lives.
    Data finish();
    /// Hands over the file of a large body; absent when the body is in memory.
    std::optional<PartialFile> takeFile() { return std::exchange(file_, std::nullopt); }

private:
    bool fail(std::string reason);

    const MediaLimits limits_;
    const OpenFile openFile_;
    std::string memory_;
    std::optional<PartialFile> file_;
    bool hasTriedFile_ = false;
    std::string failure_;
};

}  // namespace ostrel
