#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <optional>

namespace ostrel {

/// A chain of filters for frames of one size, format and colour. One thread.
class VideoGraph final {
public:
    /// Null when the chain cannot filter frames like `first`. `chain`: in libavfilter's notation.
    static std::unique_ptr<VideoGraph> make(const AVFrame& first, AVRational timeBase, const std::string& chain,
                                            std::optional<NSError>* error);

    /// True when `frame` has the size, format and colour that the graph was made for.
    bool takes(const AVFrame& frame) const;
    /// Puts a frame into the chain; the caller's reference stays valid. Null ends the stream. Returns the library's
    /// number.
    int push(AVFrame* frame);
    /// Takes a frame out of the chain; AVERROR(EAGAIN) when another frame must be pushed first, AVERROR_EOF after the
    /// last.
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

/// How the colours of a frame are brought to standard dynamic range and limited range in YCbCr.
struct ColourTreatment {
    /// Further options of the scale filter; empty, or a text that begins with a colon.
    std::string scaleOptions;
    /// The filters that follow, with commas between, which map high dynamic range or wide colours. Empty when the
    /// colours need no mapping.
    std::string filters;
    AVColorSpace matrix = AVCOL_SPC_BT709;
    AVColorPrimaries primaries = AVCOL_PRI_BT709;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_BT709;

    static ColourTreatment of(const AVFrame& frame);
};

/// The YCbCr matrix of a frame. When the frame states none, its height decides, as is customary: up to 576 lines are
/// ITU-R BT.601, more are BT.709.
AVColorSpace matrixOf(const AVFrame& frame);

}  // namespace ostrel
