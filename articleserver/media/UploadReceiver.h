#pragma once

#include "articleserver/http/MultipartReader.h"
#include "articleserver/http/WebMessage.h"
#include "articleserver/media/MediaFolder.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace articleserver {

/// Receives the body of an upload: writes its files into the media folder while they arrive and keeps its
/// fields in memory. The name of a part identifies a file; the receiver ignores the file names of the client.
class UploadReceiver final : public WebBodyReceiver, private MultipartSink {
public:
    struct FileRule {
        /// The name of the part, such as "image.jpg".
        std::string_view part;
        /// The extension of the stored file.
        std::string_view extension;
        std::uint64_t maximumBytes;
    };

    /// The receiver holds `slot`, its share of ServerLimits::uploadsAtOnce, until its end.
    UploadReceiver(std::string_view contentType, MediaFolder& media, std::vector<FileRule> rules,
                   std::shared_ptr<void> slot);

    bool take(std::string_view bytes) override;
    /// Called after the last byte. Returns the failure of the body, such as a missing file.
    ServerResult<void> finish();

    IncomingFile& file(std::string_view part) { return *files_.find(part)->second; }
    /// The value of a field in valid UTF-8; absent when the body has no such field.
    std::optional<std::string> field(std::string_view name) const;

private:
    ServerResult<void> beginPart(const std::string& name, bool isFile) override;
    ServerResult<void> content(std::string_view bytes) override;

    MediaFolder& media_;
    const std::vector<FileRule> rules_;
    const std::shared_ptr<void> slot_;
    MultipartReader reader_;
    std::map<std::string, std::unique_ptr<IncomingFile>, std::less<>> files_;
    WebFields fields_;
    std::size_t fieldBytes_ = 0;
    // The destination of the part that is arriving: a file with its rule, or a field.
    const FileRule* currentRule_ = nullptr;
    IncomingFile* currentFile_ = nullptr;
    std::string* currentField_ = nullptr;
    std::optional<ServerFailure> failure_;
};

}  // namespace articleserver
