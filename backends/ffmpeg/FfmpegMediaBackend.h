#pragma once

#include "platform/media/MediaBackend.h"

namespace ostrel {

class OutputFiles;

/// Media files through the FFmpeg libraries, in this process. Local files only: MOV and MP4, Matroska and WebM, AVI. The
/// libraries' own log is silenced for the whole process, and a single allocation of theirs is bounded.
class FfmpegMediaBackend final : public MediaBackend {
public:
    FfmpegMediaBackend();
    /// Writes through `files`; tests let its writes fail.
    explicit FfmpegMediaBackend(std::shared_ptr<OutputFiles> files);

    std::shared_ptr<MediaFile> open(const NSURL& url, std::optional<NSError>* error) override;

private:
    std::shared_ptr<OutputFiles> files_;
};

}  // namespace ostrel
