#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <optional>

namespace ostrel {

/// A chain of picture filters, set up for frames of one kind. One thread.
class VideoGraph final {
public:
    /// Null when the chain cannot take such frames. `chain`: in libavfilter's notation.
    static std::unique_ptr<VideoGraph> make(const AVFrame& first, AVRational timeBase,
                                            const std::string& chain, std::optional<NSError>* error);

    /// True when `frame` is of the kind that the graph was made for.
    bool takes(const AVFrame& frame) const;
    /// Hands in a frame, which keeps its reference; null ends the stream. The library's number.
    int push(AVFrame* frame);
    /// Takes a frame out; AVERROR(EAGAIN) when another must be handed in first, AVERROR_EOF after the last.
    int pull(AVFrame& frame);
    AVRational timeBase() const;

private:
    GraphPointer graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    int width_ = 0, height_ = 0, format_ = -1;
    AVColorSpace matrix_ = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range_ = AVCOL_RANGE_UNSPECIFIED;
    AVColorTransferCharacteristic transfer_ = AVCOL_TRC_UNSPECIFIED;
};

/// How the colours of `frame` become what every screen shows: standard dynamic range, limited range, in YCbCr.
struct ColourTreatment {
    /// What a scale filter is to do besides; empty, or options that begin with a colon.
    std::string scaleOptions;
    /// The filters that follow, with commas between: from high dynamic range or wide colours to those below. Empty when
    /// there is nothing to map.
    std::string filters;
    AVColorSpace matrix = AVCOL_SPC_BT709;
    AVColorPrimaries primaries = AVCOL_PRI_BT709;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_BT709;

    static ColourTreatment of(const AVFrame& frame);
};

/// The YCbCr matrix of a frame; when it is not stated, the one that its height has by custom: 576 lines or fewer are
/// ITU-R BT.601, more BT.709.
AVColorSpace matrixOf(const AVFrame& frame);

}  // namespace ostrel
