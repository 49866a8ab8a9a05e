#pragma once

#include "platform/media/MediaBackend.h"

namespace ostrel {

class OutputFiles;

/// Opens and converts clips through the FFmpeg libraries, in this process. Local files only: MOV and MP4, Matroska and
/// WebM, AVI. For the whole process, the libraries' log is switched off and the size of one allocation is limited.
class FfmpegMediaBackend final : public MediaBackend {
public:
    FfmpegMediaBackend();
    /// Writes through `files`, so that tests can let system calls fail.
    explicit FfmpegMediaBackend(std::shared_ptr<OutputFiles> files);

    std::shared_ptr<MediaFile> open(const NSURL& url, std::optional<NSError>* error) override;

private:
    std::shared_ptr<OutputFiles> files_;
};

}  // namespace ostrel
