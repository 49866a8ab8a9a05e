#include "backends/ffmpeg/convert/FfmpegMediaFile.h"

#include "backends/ffmpeg/convert/ClipMetadata.h"
#include "backends/ffmpeg/convert/ExportPreset.h"
#include "backends/ffmpeg/convert/FfmpegExport.h"
#include "backends/ffmpeg/convert/PictureGeometry.h"
#include "backends/ffmpeg/convert/VideoGraph.h"
#include "backends/ffmpeg/file/OutputFile.h"

#include <algorithm>
#include <cstring>

namespace ostrel {

namespace {

/// The largest picture that is decoded: 8K (8192 by 4320) and a camera's 8192 by 8192 are within the limits. The latter
/// takes about 150 MiB with the smallest set of reference frames.
constexpr int largestSide = 16384;
constexpr std::int64_t largestPixelCount = std::int64_t{8192} * 8192;
/// How many packets are read for the first picture; nearly all clips begin with a keyframe.
constexpr int largestPacketCount = 2000;

AVAssetTrack trackOf(const AVStream& stream) {
    AVAssetTrack track;
    switch (stream.codecpar->codec_type) {
    case AVMEDIA_TYPE_VIDEO:
        track.mediaType = AVMediaType::video;
        track.naturalSize = {static_cast<CGFloat>(stream.codecpar->width),
                             static_cast<CGFloat>(stream.codecpar->height)};
        track.preferredTransform = transformOfDisplayMatrix(displayMatrixOf(stream));
        break;
    case AVMEDIA_TYPE_AUDIO: track.mediaType = AVMediaType::audio; break;
    default: break;
    }
    return track;
}

/// Reads the frame that is shown at `time` (in the stream's time base, from the stream's start).
class FrameFinder final {
public:
    FrameFinder(AVFormatContext& format, AVStream& stream, AVCodecContext& decoder, std::int64_t time)
        : format_(format), stream_(stream), decoder_(decoder), time_(time) {}

    /// Null when no frame could be decoded.
    FramePointer find() {
        PacketPointer packet(av_packet_alloc());
        if (!packet || !frame_) return nullptr;
        for (int count = 0; count < largestPacketCount && !isFound_;) {
            const int status = av_read_frame(&format_, packet.get());
            if (status < 0) break;
            if (packet->stream_index == stream_.index) {
                ++count;
                take(*packet);
            }
            av_packet_unref(packet.get());
        }
        if (!isFound_) decode(nullptr);
        return std::move(best_);
    }

private:
    void take(const AVPacket& packet) {
        // The first frame is nearly always a keyframe, which the decoder can return without further packets.
        const bool isWhole = (packet.flags & AV_PKT_FLAG_KEY) && !(packet.flags & AV_PKT_FLAG_DISCARD);
        decode(&packet);
        if (isWhole && packet.pts != AV_NOPTS_VALUE && packet.pts >= time_ && !best_) decode(nullptr);
    }

    void decode(const AVPacket* packet) {
        if (isFound_) return;
        avcodec_send_packet(&decoder_, packet);
        while (!isFound_ && avcodec_receive_frame(&decoder_, frame_.get()) >= 0) {
            const std::int64_t time = frame_->best_effort_timestamp;
            const bool isLate = best_ && time != AV_NOPTS_VALUE && time > time_;
            if (!isLate) best_.reset(av_frame_clone(frame_.get()));
            isFound_ = isLate || time == AV_NOPTS_VALUE || time >= time_;
            av_frame_unref(frame_.get());
        }
    }

    AVFormatContext& format_;
    AVStream& stream_;
    AVCodecContext& decoder_;
    std::int64_t time_;
    FramePointer frame_{av_frame_alloc()};
    FramePointer best_;
    bool isFound_ = false;
};

}  // namespace

bool isPictureSizeSupported(int width, int height) {
    return width > 0 && height > 0 && width <= largestSide && height <= largestSide &&
           std::int64_t{width} * height <= largestPixelCount;
}

CodecPointer openDecoder(const AVStream& stream, int threads, std::optional<NSError>* error) {
    const auto fail = [&](NSError why) -> CodecPointer {
        if (error) *error = std::move(why);
        return nullptr;
    };
    const AVCodecParameters& parameters = *stream.codecpar;
    const AVCodec* decoder = decoderFor(parameters.codec_id);
    if (!decoder)
        return fail(NSError{std::string("The clip is in a format that cannot be read (") +
                            avcodec_get_name(parameters.codec_id) + ")."});
    if (parameters.codec_type == AVMEDIA_TYPE_VIDEO && !isPictureSizeSupported(parameters.width, parameters.height))
        return fail(NSError{"The clip's pictures are " + std::to_string(parameters.width) + " by " +
                            std::to_string(parameters.height) + " pixels, which is not supported."});
    CodecPointer codec(avcodec_alloc_context3(decoder));
    if (!codec) return fail(NSError{"Memory is short."});
    int status = avcodec_parameters_to_context(codec.get(), &parameters);
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = threads;
    codec->max_pixels = largestPixelCount;
    if (status >= 0) status = avcodec_open2(codec.get(), decoder, nullptr);
    if (status < 0) return fail(ffmpegError("The clip cannot be decoded", status));
    return codec;
}

std::shared_ptr<const CGImage> imageOfFrame(const AVFrame& decoded, std::optional<NSError>* error) {
    const auto fail = [&](NSError why) -> std::shared_ptr<const CGImage> {
        if (error) *error = std::move(why);
        return nullptr;
    };
    const ColourTreatment colours = ColourTreatment::of(decoded);
    const bool isMapped = !colours.filters.empty();
    FramePointer mapped;
    if (isMapped) {
        auto graph = VideoGraph::make(decoded, {1, AV_TIME_BASE}, colours.filters, error);
        mapped.reset(av_frame_alloc());
        if (!graph || !mapped) return nullptr;
        FramePointer input(av_frame_clone(&decoded));
        if (!input) return fail(NSError{"Memory is short."});
        int status = graph->push(input.get());
        if (status >= 0) status = graph->push(nullptr);
        if (status >= 0) status = graph->pull(*mapped);
        if (status < 0) return fail(ffmpegError("The picture's colours cannot be mapped", status));
    }
    const AVFrame& frame = mapped ? *mapped : decoded;
    auto image = CGImage::make(frame.width, frame.height);
    if (!image) return fail(NSError{"Memory is short."});
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const ScalerPointer scaler(sws_getContext(frame.width, frame.height, format, frame.width, frame.height,
                                              AV_PIX_FMT_RGB0, SWS_BICUBIC, nullptr, nullptr, nullptr));
    if (!scaler) return fail(NSError{"The picture's format is not known."});
    // swscale's numbers of matrices are those of ITU-T H.273.
    const int* coefficients = sws_getCoefficients(isMapped ? AVCOL_SPC_BT709 : colours.matrix);
    const bool isFullRange = frame.color_range == AVCOL_RANGE_JPEG;
    constexpr int unity = 1 << 16;
    sws_setColorspaceDetails(scaler.get(), coefficients, isFullRange, coefficients, 1, 0, unity, unity);
    // Vector code writes whole groups of pixels, so rows that end within a group are first written to a wider frame.
    constexpr int group = 64;
    FramePointer wide;
    std::uint8_t* rows[] = {image->row(0)};
    int stride[] = {static_cast<int>(image->bytesPerRow())};
    if (frame.width % group != 0) {
        wide.reset(av_frame_alloc());
        if (!wide) return fail(NSError{"Memory is short."});
        wide->format = AV_PIX_FMT_RGB0;
        wide->width = frame.width + group;
        wide->height = frame.height;
        if (av_frame_get_buffer(wide.get(), 0) < 0) return fail(NSError{"Memory is short."});
        rows[0] = wide->data[0];
        stride[0] = wide->linesize[0];
    }
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, rows, stride) != frame.height)
        return fail(NSError{"The picture cannot be converted."});
    if (wide) {
        for (int y = 0; y < frame.height; ++y)
            std::memcpy(image->row(y), wide->data[0] + std::ptrdiff_t{y} * wide->linesize[0], image->bytesPerRow());
    }
    return image;
}

FfmpegMediaFile::FfmpegMediaFile(std::unique_ptr<InputReader> reader, std::shared_ptr<OutputFiles> files)
    : reader_(std::move(reader)), files_(std::move(files)) {
    const AVFormatContext& format = reader_->format();
    if (format.duration > 0) duration_ = CMTimeMake(format.duration, AV_TIME_BASE);
    // Only the first track of video is shown; cover pictures are no video.
    const int shown = reader_->videoStream();
    for (int i = 0; i < static_cast<int>(format.nb_streams); ++i) {
        AVAssetTrack track = trackOf(*format.streams[i]);
        if (track.mediaType == AVMediaType::video && i < shown) track.mediaType = AVMediaType::other;
        if (track.mediaType == AVMediaType::video && shown < 0) track.mediaType = AVMediaType::other;
        tracks_.push_back(std::move(track));
    }
    metadata_ = captureMetadata(format);
}

std::vector<std::string> FfmpegMediaFile::exportPresets() const {
    const int video = reader_->videoStream();
    if (video < 0) return {};
    const AVCodecParameters& parameters = *reader_->format().streams[video]->codecpar;
    if (!decoderFor(parameters.codec_id) || !isPictureSizeSupported(parameters.width, parameters.height)) return {};
    std::vector<std::string> names;
    for (const ExportPreset& preset : exportPresetTable()) {
        if (preset.isSupportedByBuild()) names.emplace_back(preset.name);
    }
    return names;
}

std::shared_ptr<const CGImage> FfmpegMediaFile::copyImage(CMTime time, std::optional<NSError>* error) {
    const bool isFirst = !time.isKnown() || time.value <= 0;
    FramePointer frame;
    if (isFirst && isAtStart_) {
        isAtStart_ = false;
        frame = frameAt(*reader_, time, error);
    }
    // The beginning of the index may lack the wanted frame, because an edit list can begin anywhere.
    if (!frame) {
        const auto whole = InputReader::open(reader_->sharedFile(), InputReader::Detail::streams, nullptr, error);
        if (whole) frame = frameAt(*whole, time, error);
    }
    if (!frame) return nullptr;
    auto image = imageOfFrame(*frame, error);
    if (image && error) error->reset();
    return image;
}

FramePointer FfmpegMediaFile::frameAt(InputReader& reader, CMTime time, std::optional<NSError>* error) const {
    const auto fail = [&](const char* why) -> FramePointer {
        if (error) *error = NSError{why};
        return nullptr;
    };
    const int video = reader.videoStream();
    if (video < 0) return fail("The clip has no pictures.");
    AVFormatContext& format = reader.format();
    AVStream& stream = *format.streams[video];
    for (unsigned i = 0; i < format.nb_streams; ++i)
        format.streams[i]->discard = static_cast<int>(i) == video ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    // One thread: with more threads the first picture would wait for later ones.
    const CodecPointer decoder = openDecoder(stream, 1, error);
    if (!decoder) return nullptr;

    const std::int64_t start = stream.start_time != AV_NOPTS_VALUE ? stream.start_time : 0;
    const bool isFirst = !time.isKnown() || time.value <= 0;
    const std::int64_t wanted =
        isFirst ? start : start + av_rescale_q(time.value, AVRational{1, time.timescale}, stream.time_base);
    if (!isFirst && av_seek_frame(&format, video, wanted, AVSEEK_FLAG_BACKWARD) < 0)
        return fail("The clip cannot be searched.");
    FramePointer frame = FrameFinder(format, stream, *decoder, wanted).find();
    return frame ? std::move(frame) : fail("The clip has no picture that can be decoded.");
}

std::shared_ptr<MediaExport> FfmpegMediaFile::makeExport(const MediaExportRequest& request) {
    const auto offered = exportPresets();
    if (std::find(offered.begin(), offered.end(), request.presetName) == offered.end()) return nullptr;
    for (const ExportPreset& preset : exportPresetTable()) {
        if (preset.name == request.presetName)
            return std::make_shared<FfmpegExport>(reader_->sharedFile(), preset, request, files_);
    }
    return nullptr;
}

}  // namespace ostrel
