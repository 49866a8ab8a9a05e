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

/// Takes the body of an upload: its files go into the media folder while they arrive, its fields into memory. Files are
/// known by the names of their parts; what a client calls them is not looked at.
class UploadReceiver final : public WebBodyReceiver, private MultipartSink {
public:
    struct FileRule {
        std::string_view part;       ///< "image.jpg"
        std::string_view extension;  ///< that it is stored with
        std::uint64_t maximumBytes;
    };

    /// `lane` is held as long as this object lives.
    UploadReceiver(std::string_view contentType, MediaFolder& media, std::vector<FileRule> rules,
                   std::shared_ptr<void> lane);

    bool take(std::string_view bytes) override;
    /// After the last byte: what was wrong with the body, or that a file is missing.
    ServerResult<ServerDone> finish();

    IncomingFile& file(std::string_view part) { return *files_.find(part)->second; }
    /// Valid UTF-8; absent when there is no such field.
    std::optional<std::string> field(std::string_view name) const;

private:
    ServerResult<ServerDone> beginPart(const std::string& name, bool isFile) override;
    ServerResult<ServerDone> content(std::string_view bytes) override;

    MediaFolder& media_;
    const std::vector<FileRule> rules_;
    const std::shared_ptr<void> lane_;
    MultipartReader reader_;
    std::map<std::string, std::unique_ptr<IncomingFile>, std::less<>> files_;
    WebFields fields_;
    std::size_t fieldBytes_ = 0;
    // Where the content of the part that began last goes.
    const FileRule* currentRule_ = nullptr;
    IncomingFile* currentFile_ = nullptr;
    std::string* currentField_ = nullptr;
    std::optional<ServerFailure> failure_;
};

}  // namespace articleserver
