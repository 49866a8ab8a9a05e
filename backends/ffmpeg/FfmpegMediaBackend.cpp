#include "backends/ffmpeg/FfmpegMediaBackend.h"

#include "backends/ffmpeg/convert/FfmpegMediaFile.h"
#include "backends/ffmpeg/file/OutputFile.h"

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace ostrel {

namespace {
/// Bytes. The largest picture that is decoded takes a third of this; a damaged index may ask for more.
constexpr std::size_t largestAllocation = std::size_t{512} * 1024 * 1024;
}  // namespace

FfmpegMediaBackend::FfmpegMediaBackend() : FfmpegMediaBackend(std::make_shared<OutputFiles>()) {}

FfmpegMediaBackend::FfmpegMediaBackend(std::shared_ptr<OutputFiles> files) : files_(std::move(files)) {
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(largestAllocation);
}

std::shared_ptr<MediaFile> FfmpegMediaBackend::open(const NSURL& url, std::optional<NSError>* error) {
    if (!url.isFileURL()) {
        if (error) *error = NSError{"The address leads to no file."};
        return nullptr;
    }
    auto file = InputFile::open(url.path(), error);
    if (!file) return nullptr;
    auto reader = InputReader::open(file, InputReader::Detail::beginning, nullptr, error);
    if (!reader) return nullptr;
    return std::make_shared<FfmpegMediaFile>(std::move(reader), files_);
}

}  // namespace ostrel
