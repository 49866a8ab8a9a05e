#pragma once

#include "platform/foundation/values/Data.h"
#include "serverframework/http/HttpTransfer.h"
#include "serverframework/media/PartialFile.h"

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace ostrel {

/// Gathers the body of a medium: a small one in memory, a larger one in a file, so that memory stays bounded whatever a
/// server sends. One thread at a time.
class MediumBody final : public BodySink {
public:
    struct Limits {
        std::size_t inMemory = std::size_t{256} * 1024;
        /// When no file can be written, memory has to do.
        std::size_t inMemoryWithoutFile = std::size_t{64} * 1024 * 1024;
    };
    using OpenFile = std::function<std::optional<PartialFile>()>;

    MediumBody(Limits limits, OpenFile openFile) : limits_(limits), openFile_(std::move(openFile)) {}

    bool write(std::string_view bytes) override;
    const std::string& failure() const override { return failure_; }

    /// The whole body, after the last `write`; null when it cannot be read, for which `failure` has the reason. A large
    /// one is its mapped file, which must not be written to as far as the body reaches.
    Data finish();
    /// The file of a body that is one.
    std::optional<PartialFile> takeFile() { return std::exchange(file_, std::nullopt); }

private:
    bool fail(std::string reason);

    const Limits limits_;
    const OpenFile openFile_;
    std::string memory_;
    std::optional<PartialFile> file_;
    bool hasTriedFile_ = false;
    std::string failure_;
};

}  // namespace ostrel
