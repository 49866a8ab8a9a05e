#include "backends/ffmpeg/convert/FfmpegExport.h"

#include "backends/ffmpeg/convert/ClipReader.h"
#include "backends/ffmpeg/convert/ClipWriter.h"
#include "platform/foundation/runloop/NSThread.h"

#include <algorithm>
#include <cassert>
#include <system_error>
#include <thread>

namespace ostrel {

namespace {
/// The progress at which the last picture has been taken; the encoder's last pictures and the index remain.
constexpr double shareOfPictures = 0.98;
/// The share of decoding and scaling in the work on a picture; the rest is encoding. Decoding is ahead of encoding by
/// at most a full queue.
constexpr double shareOfDecoding = 0.75;
}  // namespace

FfmpegExport::FfmpegExport(std::shared_ptr<const InputFile> source, const ExportPreset& preset,
                           MediaExportRequest request, std::shared_ptr<OutputFiles> files)
    : source_(std::move(source)), preset_(preset), request_(std::move(request)), files_(std::move(files)) {}

void FfmpegExport::start(std::function<void()> completion) {
    assert(status() == AVAssetExportSessionStatus::unknown);
    status_.store(AVAssetExportSessionStatus::waiting, std::memory_order_release);
    NSThread::detachNewThread([self = shared_from_this(), completion = std::move(completion)] {
        self->status_.store(AVAssetExportSessionStatus::exporting, std::memory_order_release);
        std::optional<NSError> error;
        try {
            error = self->run();
        } catch (const std::bad_alloc&) {
            error = NSError{"Memory is short."};
        }
        self->end(std::move(error));
        if (completion) completion();
    });
}

void FfmpegExport::cancel() {
    {
        const std::lock_guard lock(mutex_);
        isCancelled_ = true;
    }
    isInterrupted_.store(true, std::memory_order_relaxed);
    queue_.stop();
}

std::optional<NSError> FfmpegExport::error() const {
    const std::lock_guard lock(mutex_);
    return error_;
}

void FfmpegExport::end(std::optional<NSError> error) {
    auto status = AVAssetExportSessionStatus::completed;
    {
        const std::lock_guard lock(mutex_);
        if (error) {
            status = isCancelled_ ? AVAssetExportSessionStatus::cancelled : AVAssetExportSessionStatus::failed;
            error_ = isCancelled_ ? NSError{"The conversion was cancelled.", ECANCELED} : std::move(*error);
        }
    }
    if (status == AVAssetExportSessionStatus::completed) progress_.store(1, std::memory_order_relaxed);
    status_.store(status, std::memory_order_release);
}

std::optional<NSError> FfmpegExport::run() {
    if (source_->isAt(request_.outputPath)) return NSError{"The clip cannot be converted onto itself."};
    std::optional<NSError> error;
    const auto output = OutputFile::create(files_, request_.outputPath, &error);
    if (!output) return error;
    error = convert(*output);
    if (error) return error;
    // A cancel before this point leaves no file; a later one has no effect.
    if (isInterrupted_.load(std::memory_order_relaxed)) return NSError{"The conversion was cancelled."};
    return output->publish();
}

std::optional<NSError> FfmpegExport::convert(OutputFile& output) {
    std::optional<NSError> error;
    const auto reader = ClipReader::open(source_, preset_, isInterrupted_, &error);
    if (!reader) return error;
    const auto writer = ClipWriter::make(output, reader->format(), preset_,
                                         {.hasAudio = reader->hasAudio(),
                                          .sampleRate = reader->sampleRate(),
                                          .frameRate = reader->frameRate(),
                                          .optimizesForNetworkUse = request_.optimizesForNetworkUse},
                                         isInterrupted_, &error);
    if (!writer) return error;

    std::optional<NSError> readingError;
    std::thread reading;
    try {
        reading = std::thread([&] {
            try {
                readingError = reader->readInto(queue_);
            } catch (const std::bad_alloc&) {
                readingError = NSError{"Memory is short."};
            }
            if (readingError) queue_.stop();
        });
    } catch (const std::system_error&) {
        return NSError{"No thread can be started."};
    }
    error = encodeAll(*reader, *writer);
    if (error) {
        isInterrupted_.store(true, std::memory_order_relaxed);
        queue_.stop();
    }
    reading.join();
    // A writer that fails also stops the reader; the writer's error is the cause.
    if (error) return error;
    return readingError ? readingError : writer->finish();
}

std::optional<NSError> FfmpegExport::encodeAll(const ClipReader& reader, ClipWriter& writer) {
    const double ticks = reader.duration() * outputTicks;
    while (auto queued = queue_.pop()) {
        if (isInterrupted_.load(std::memory_order_relaxed)) break;
        if (auto error = writer.put(*queued->frame, queued->isVideo)) return error;
        if (ticks > 0) {
            const double done = (static_cast<double>(reader.time()) * shareOfDecoding +
                                 static_cast<double>(writer.time()) * (1 - shareOfDecoding)) /
                                ticks;
            progress_.store(static_cast<float>(std::clamp(done, 0.0, 1.0) * shareOfPictures),
                            std::memory_order_relaxed);
        }
    }
    if (isInterrupted_.load(std::memory_order_relaxed)) return NSError{"The conversion was cancelled."};
    return std::nullopt;
}

}  // namespace ostrel
