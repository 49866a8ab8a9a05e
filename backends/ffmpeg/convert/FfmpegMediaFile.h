#pragma once

#include "backends/ffmpeg/file/InputFile.h"
#include "platform/media/MediaBackend.h"

namespace ostrel {

class OutputFiles;

/// One clip, opened through libavformat.
class FfmpegMediaFile final : public MediaFile {
public:
    FfmpegMediaFile(std::unique_ptr<InputReader> reader, std::shared_ptr<OutputFiles> files);

    CMTime duration() const override { return duration_; }
    const std::vector<AVAssetTrack>& tracks() const override { return tracks_; }
    const std::vector<AVMetadataItem>& metadata() const override { return metadata_; }
    std::vector<std::string> exportPresets() const override;
    bool canGenerateImages() const override { return true; }
    std::shared_ptr<const CGImage> copyImage(CMTime time, std::optional<NSError>* error) override;
    std::shared_ptr<MediaExport> makeExport(const MediaExportRequest& request) override;

private:
    FramePointer frameAt(InputReader& reader, CMTime time, std::optional<NSError>* error) const;

    std::unique_ptr<InputReader> reader_;
    std::shared_ptr<OutputFiles> files_;
    CMTime duration_;
    std::vector<AVAssetTrack> tracks_;
    std::vector<AVMetadataItem> metadata_;
    /// No picture has been read yet, so that the reader is at the first one.
    bool isAtStart_ = true;
};

/// The picture of a decoded frame. Null, with a sentence in `error` when given, if memory is short or the frame's
/// format is not supported.
std::shared_ptr<const CGImage> imageOfFrame(const AVFrame& frame, std::optional<NSError>* error);

/// An open decoder for a stream; null, with a sentence in `error`, if there is none. `threads`: 0 means the number of
/// cores.
CodecPointer openDecoder(const AVStream& stream, int threads, std::optional<NSError>* error);

/// False for pictures without area and for those that are too large to be decoded.
bool isPictureSizeSupported(int width, int height);

}  // namespace ostrel
