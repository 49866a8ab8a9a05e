#pragma once

#include "backends/ffmpeg/convert/ExportPreset.h"
#include "backends/ffmpeg/convert/FrameQueue.h"
#include "backends/ffmpeg/file/InputFile.h"
#include "backends/ffmpeg/file/OutputFile.h"
#include "platform/media/MediaBackend.h"

#include <atomic>
#include <mutex>

namespace ostrel {

class ClipReader;
class ClipWriter;

/// One export: a thread that decodes, a thread that encodes, and a queue between them.
class FfmpegExport final : public MediaExport, public std::enable_shared_from_this<FfmpegExport> {
public:
    FfmpegExport(std::shared_ptr<const InputFile> source, const ExportPreset& preset, MediaExportRequest request,
                 std::shared_ptr<OutputFiles> files);

    void start(std::function<void()> completion) override;
    void cancel() override;
    AVAssetExportSessionStatus status() const override { return status_.load(std::memory_order_acquire); }
    float progress() const override { return progress_.load(std::memory_order_relaxed); }
    std::optional<NSError> error() const override;

private:
    /// Absent when the file is at its destination.
    std::optional<NSError> run();
    std::optional<NSError> convert(OutputFile& output);
    std::optional<NSError> encodeAll(const ClipReader& reader, ClipWriter& writer);
    void end(std::optional<NSError> error);

    std::shared_ptr<const InputFile> source_;
    const ExportPreset& preset_;
    MediaExportRequest request_;
    std::shared_ptr<OutputFiles> files_;
    FrameQueue queue_;
    /// Stops the libraries and the loops early. Whether the export counts as cancelled is decided under the mutex.
    std::atomic<bool> isInterrupted_{false};
    std::atomic<float> progress_{0};
    /// Stored with release order after error_, so that a thread that reads a final status also reads its error.
    std::atomic<AVAssetExportSessionStatus> status_{AVAssetExportSessionStatus::unknown};
    // Guards the members below.
    mutable std::mutex mutex_;
    std::optional<NSError> error_;
    bool isCancelled_ = false;
};

}  // namespace ostrel
