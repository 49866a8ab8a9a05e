#pragma once

#include "platform/foundation/values/NSError.h"

#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavfilter/avfilter.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace ostrel {

namespace detail {
struct FreePacket {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct FreeCodec {
    void operator()(AVCodecContext* codec) const { avcodec_free_context(&codec); }
};
struct FreeGraph {
    void operator()(AVFilterGraph* graph) const { avfilter_graph_free(&graph); }
};
struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
struct FreeResampler {
    void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};
/// Frees a context of custom input or output, with its buffer.
struct FreeIo {
    void operator()(AVIOContext* io) const {
        av_freep(static_cast<void*>(&io->buffer));
        avio_context_free(&io);
    }
};
struct CloseInput {
    void operator()(AVFormatContext* format) const { avformat_close_input(&format); }
};
struct FreeFormat {
    void operator()(AVFormatContext* format) const { avformat_free_context(format); }
};
}  // namespace detail

using PacketPointer = std::unique_ptr<AVPacket, detail::FreePacket>;
using FramePointer = std::unique_ptr<AVFrame, detail::FreeFrame>;
using CodecPointer = std::unique_ptr<AVCodecContext, detail::FreeCodec>;
using GraphPointer = std::unique_ptr<AVFilterGraph, detail::FreeGraph>;
using ScalerPointer = std::unique_ptr<SwsContext, detail::FreeScaler>;
using ResamplerPointer = std::unique_ptr<SwrContext, detail::FreeResampler>;
using IoPointer = std::unique_ptr<AVIOContext, detail::FreeIo>;
using InputPointer = std::unique_ptr<AVFormatContext, detail::CloseInput>;
using OutputPointer = std::unique_ptr<AVFormatContext, detail::FreeFormat>;

/// Options that are given to the libraries by name.
class FfmpegOptions final {
public:
    FfmpegOptions() = default;
    ~FfmpegOptions() { av_dict_free(&options_); }
    FfmpegOptions(const FfmpegOptions&) = delete;
    FfmpegOptions& operator=(const FfmpegOptions&) = delete;

    void set(const char* name, const std::string& value) { av_dict_set(&options_, name, value.c_str(), 0); }
    AVDictionary** get() { return &options_; }

private:
    AVDictionary* options_ = nullptr;
};

/// An error that says `what`, then a colon and the message of the library or the system for `code` (negative).
NSError ffmpegError(const std::string& what, int code);

}  // namespace ostrel
