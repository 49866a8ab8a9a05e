#include "backends/ffmpeg/convert/VideoGraph.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/opt.h>
#include <libavutil/pixdesc.h>
}

namespace ostrel {

namespace {

constexpr int largestDefinitionOf601 = 576;

struct FreeInOut {
    void operator()(AVFilterInOut* links) const { avfilter_inout_free(&links); }
};
using InOutPointer = std::unique_ptr<AVFilterInOut, FreeInOut>;

InOutPointer linkTo(AVFilterContext* filter, const char* name) {
    InOutPointer link(avfilter_inout_alloc());
    if (link) {
        link->name = av_strdup(name);
        link->filter_ctx = filter;
        link->pad_idx = 0;
        link->next = nullptr;
    }
    return link;
}

bool isRgb(const AVFrame& frame) {
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    return description && (description->flags & AV_PIX_FMT_FLAG_RGB);
}

}  // namespace

std::unique_ptr<VideoGraph> VideoGraph::make(const AVFrame& first, AVRational timeBase, const std::string& chain,
                                             std::optional<NSError>* error) {
    const auto fail = [&](int code) -> std::unique_ptr<VideoGraph> {
        if (error) *error = ffmpegError("The pictures cannot be scaled", code);
        return nullptr;
    };
    auto graph = std::make_unique<VideoGraph>();
    graph->graph_.reset(avfilter_graph_alloc());
    if (!graph->graph_) return fail(AVERROR(ENOMEM));
    // Scaled pictures are small, and the cores are busy with decoding and encoding.
    graph->graph_->nb_threads = 1;

    graph->source_ = avfilter_graph_alloc_filter(graph->graph_.get(), avfilter_get_by_name("buffer"), "in");
    if (!graph->source_) return fail(AVERROR(ENOMEM));
    AVBufferSrcParameters* parameters = av_buffersrc_parameters_alloc();
    if (!parameters) return fail(AVERROR(ENOMEM));
    parameters->format = first.format;
    parameters->width = first.width;
    parameters->height = first.height;
    parameters->time_base = timeBase;
    parameters->sample_aspect_ratio = {1, 1};
    int status = av_buffersrc_parameters_set(graph->source_, parameters);
    av_free(parameters);
    if (status >= 0) status = avfilter_init_str(graph->source_, nullptr);
    if (status < 0) return fail(status);
    status = avfilter_graph_create_filter(&graph->sink_, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr,
                                          graph->graph_.get());
    if (status < 0) return fail(status);

    InOutPointer outputs = linkTo(graph->source_, "in"), inputs = linkTo(graph->sink_, "out");
    if (!outputs || !inputs) return fail(AVERROR(ENOMEM));
    AVFilterInOut* openOutputs = outputs.release();
    AVFilterInOut* openInputs = inputs.release();
    status = avfilter_graph_parse_ptr(graph->graph_.get(), chain.c_str(), &openInputs, &openOutputs, nullptr);
    avfilter_inout_free(&openInputs);
    avfilter_inout_free(&openOutputs);
    if (status >= 0) status = avfilter_graph_config(graph->graph_.get(), nullptr);
    if (status < 0) return fail(status);

    graph->width_ = first.width;
    graph->height_ = first.height;
    graph->format_ = first.format;
    graph->matrix_ = first.colorspace;
    graph->range_ = first.color_range;
    graph->transfer_ = first.color_trc;
    return graph;
}

bool VideoGraph::takes(const AVFrame& frame) const {
    return frame.width == width_ && frame.height == height_ && frame.format == format_ && frame.colorspace == matrix_ &&
           frame.color_range == range_ && frame.color_trc == transfer_;
}

int VideoGraph::push(AVFrame* frame) {
    return av_buffersrc_add_frame_flags(source_, frame, AV_BUFFERSRC_FLAG_KEEP_REF);
}

int VideoGraph::pull(AVFrame& frame) { return av_buffersink_get_frame(sink_, &frame); }

AVRational VideoGraph::timeBase() const { return av_buffersink_get_time_base(sink_); }

AVColorSpace matrixOf(const AVFrame& frame) {
    switch (frame.colorspace) {
    case AVCOL_SPC_BT709:
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_SMPTE240M:
    case AVCOL_SPC_FCC:
    case AVCOL_SPC_BT2020_NCL: return frame.colorspace;
    default: break;
    }
    return frame.height <= largestDefinitionOf601 ? AVCOL_SPC_SMPTE170M : AVCOL_SPC_BT709;
}

ColourTreatment ColourTreatment::of(const AVFrame& frame) {
    ColourTreatment treatment;
    const bool isPq = frame.color_trc == AVCOL_TRC_SMPTE2084, isHlg = frame.color_trc == AVCOL_TRC_ARIB_STD_B67;
    const bool isWide = frame.color_primaries == AVCOL_PRI_BT2020 || frame.colorspace == AVCOL_SPC_BT2020_NCL;
    const std::string range = frame.color_range == AVCOL_RANGE_JPEG ? "pc" : "tv";
    // zscale knows the matrices by the names of ITU-T H.273.
    const std::string matrix = frame.colorspace == AVCOL_SPC_BT709 ? "709" : "2020_ncl";
    const std::string source =
        std::string("rangein=") + (range == "pc" ? "full" : "limited") + ":matrixin=" + matrix + ":primariesin=2020";
    if (isRgb(frame)) {
        treatment.scaleOptions = ":out_color_matrix=bt709:out_range=tv";
        return treatment;
    }
    if (isPq || isHlg) {
        // The samples are converted to linear light, in which 1 is the reference white of ITU-R BT.2408 (203 cd/m2),
        // then to the primaries of BT.709; then highlights are compressed and the transfer function of BT.709 is
        // applied.
        treatment.filters = "format=yuv420p10,zscale=" + source +
                            ":transferin=" + (isPq ? "smpte2084" : "arib-std-b67") +
                            ":transfer=linear:npl=203,format=gbrpf32,zscale=primaries=709,"
                            "tonemap=tonemap=hable:desat=0,"
                            "zscale=transfer=709:matrix=709:range=limited:dither=none,format=yuv420p";
        return treatment;
    }
    if (isWide) {
        treatment.filters = "format=yuv420p10,zscale=" + source +
                            ":transferin=709:transfer=709:primaries=709:matrix=709:range=limited,format=yuv420p";
        return treatment;
    }
    // Only the range of the samples is changed; the tags describe their matrix.
    treatment.matrix = matrixOf(frame);
    const bool isStandardDefinition = treatment.matrix != AVCOL_SPC_BT709;
    treatment.primaries = frame.color_primaries != AVCOL_PRI_UNSPECIFIED ? frame.color_primaries
                          : isStandardDefinition                         ? AVCOL_PRI_SMPTE170M
                                                                         : AVCOL_PRI_BT709;
    treatment.transfer = frame.color_trc != AVCOL_TRC_UNSPECIFIED ? frame.color_trc
                         : isStandardDefinition                   ? AVCOL_TRC_SMPTE170M
                                                                  : AVCOL_TRC_BT709;
    const AVPixFmtDescriptor* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame.format));
    const bool isFullRange = frame.color_range == AVCOL_RANGE_JPEG ||
                             (description && std::string_view(description->name).starts_with("yuvj"));
    if (isFullRange) treatment.scaleOptions = ":in_range=pc:out_range=tv";
    return treatment;
}

}  // namespace ostrel
