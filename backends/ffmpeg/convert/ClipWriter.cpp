#include "backends/ffmpeg/convert/ClipWriter.h"

#include "backends/ffmpeg/convert/ClipMetadata.h"

#include <algorithm>
#include <cmath>
#include <thread>

extern "C" {
#include <libavutil/opt.h>
}

namespace ostrel {

namespace {

constexpr int bufferSize = 256 * 1024;

/// The state of the custom input that reads the output file back: the file and the position in it.
struct ReadBack {
    const OutputFile* file;
    std::int64_t position = 0;
};

/// The threads that encode. One thread encodes small pictures as fast as four cores decode large ones; more threads
/// would wait for each other.
int encodingThreads() {
    constexpr unsigned coresForOne = 4, largestThreadCount = 4;
    return static_cast<int>(std::clamp(std::thread::hardware_concurrency() / coresForOne, 1U, largestThreadCount));
}

std::int64_t moved(std::int64_t& position, std::int64_t size, std::int64_t offset, int whence) {
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE: return size;
    case SEEK_SET: break;
    case SEEK_CUR: offset += position; break;
    case SEEK_END: offset += size; break;
    default: return AVERROR(EINVAL);
    }
    if (offset < 0) return AVERROR(EINVAL);
    return position = offset;
}

int readBack(void* opaque, std::uint8_t* bytes, int count) {
    auto& self = *static_cast<ReadBack*>(opaque);
    const int got = self.file->read(self.position, bytes, count);
    if (got <= 0) return got == 0 ? AVERROR_EOF : AVERROR(-got);
    self.position += got;
    return got;
}

std::int64_t seekBack(void* opaque, std::int64_t offset, int whence) {
    auto& self = *static_cast<ReadBack*>(opaque);
    return moved(self.position, self.file->size(), offset, whence);
}

}  // namespace

ClipWriter::ClipWriter(OutputFile& output, const ExportPreset& preset, const Settings& settings,
                       const std::atomic<bool>& interrupted)
    : output_(output), preset_(preset), settings_(settings), interrupted_(interrupted) {}

ClipWriter::~ClipWriter() = default;

std::unique_ptr<ClipWriter> ClipWriter::make(OutputFile& output, const AVFormatContext& source,
                                             const ExportPreset& preset, const Settings& settings,
                                             const std::atomic<bool>& interrupted, std::optional<NSError>* error) {
    auto writer = std::make_unique<ClipWriter>(output, preset, settings, interrupted);
    int status = writer->openMultiplexer(source);
    if (status >= 0 && settings.hasAudio) status = writer->openAudioEncoder();
    if (status >= 0) return writer;
    if (error) *error = ffmpegError("The clip cannot be encoded", status);
    return nullptr;
}

int ClipWriter::openMultiplexer(const AVFormatContext& source) {
    AVFormatContext* format = nullptr;
    const int status = avformat_alloc_output_context2(&format, nullptr, "mp4", nullptr);
    if (status < 0) return status;
    format_.reset(format);
    auto* buffer = static_cast<unsigned char*>(av_malloc(bufferSize));
    if (!buffer) return AVERROR(ENOMEM);
    const auto writeOut = [](void* self, std::uint8_t* bytes, int count) -> int {
        auto& writer = *static_cast<ClipWriter*>(self);
        if (writer.interrupted_.load(std::memory_order_relaxed)) return AVERROR_EXIT;
        const int written = writer.output_.write(writer.position_, bytes, count);
        if (written < 0) return AVERROR(-written);
        writer.position_ += written;
        return written;
    };
    const auto seekOut = [](void* self, std::int64_t offset, int whence) -> std::int64_t {
        auto& writer = *static_cast<ClipWriter*>(self);
        return moved(writer.position_, writer.output_.size(), offset, whence);
    };
    io_.reset(avio_alloc_context(buffer, bufferSize, 1, this, nullptr, writeOut, seekOut));
    if (!io_) {
        av_free(buffer);
        return AVERROR(ENOMEM);
    }
    // Without this, each packet would cost a system call.
    io_->min_packet_size = bufferSize;
    format->pb = io_.get();
    format->flags |= AVFMT_FLAG_CUSTOM_IO;
    // To put the index in front, the multiplexer reads the file that it is writing by its name.
    format->url = av_strdup("");
    format->opaque = this;
    format->io_open = [](AVFormatContext* self, AVIOContext** io, const char*, int flags, AVDictionary**) -> int {
        if (flags & AVIO_FLAG_WRITE) return AVERROR(EPERM);
        auto* bytes = static_cast<unsigned char*>(av_malloc(bufferSize));
        auto* reading = new ReadBack{&static_cast<ClipWriter*>(self->opaque)->output_};
        *io = bytes ? avio_alloc_context(bytes, bufferSize, 0, reading, readBack, nullptr, seekBack) : nullptr;
        if (*io) return 0;
        av_free(bytes);
        delete reading;
        return AVERROR(ENOMEM);
    };
    format->io_close2 = [](AVFormatContext*, AVIOContext* io) -> int {
        delete static_cast<ReadBack*>(io->opaque);
        detail::FreeIo()(io);
        return 0;
    };
    copyCaptureMetadata(source, *format);

    videoStream_ = avformat_new_stream(format, nullptr);
    if (settings_.hasAudio) audioStream_ = avformat_new_stream(format, nullptr);
    return videoStream_ && (audioStream_ || !settings_.hasAudio) ? 0 : AVERROR(ENOMEM);
}

int ClipWriter::openAudioEncoder() {
    const AVCodec* codec = avcodec_find_encoder_by_name("aac");
    audio_.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!audio_) return AVERROR_ENCODER_NOT_FOUND;
    audio_->profile = FF_PROFILE_AAC_LOW;
    audio_->bit_rate = preset_.audioRate;
    audio_->sample_rate = settings_.sampleRate;
    audio_->sample_fmt = AV_SAMPLE_FMT_FLTP;
    audio_->time_base = {1, settings_.sampleRate};
    audio_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    av_channel_layout_default(&audio_->ch_layout, preset_.audioChannels);
    int status = avcodec_open2(audio_.get(), codec, nullptr);
    if (status >= 0) status = avcodec_parameters_from_context(audioStream_->codecpar, audio_.get());
    audioStream_->time_base = audio_->time_base;
    return status;
}

int ClipWriter::openVideoEncoder(const AVFrame& first) {
    const AVCodec* codec = avcodec_find_encoder_by_name("libx264");
    video_.reset(codec ? avcodec_alloc_context3(codec) : nullptr);
    if (!video_) return AVERROR_ENCODER_NOT_FOUND;
    video_->width = first.width;
    video_->height = first.height;
    video_->pix_fmt = AV_PIX_FMT_YUV420P;
    video_->sample_aspect_ratio = {1, 1};
    video_->colorspace = first.colorspace;
    video_->color_primaries = first.color_primaries;
    video_->color_trc = first.color_trc;
    video_->color_range = AVCOL_RANGE_MPEG;
    video_->time_base = {1, outputTicks};
    video_->framerate = av_d2q(settings_.frameRate, 1'001'000);
    video_->gop_size = static_cast<int>(std::lround(settings_.frameRate * secondsBetweenKeyframes));
    video_->rc_max_rate = preset_.largestVideoRate;
    video_->rc_buffer_size = static_cast<int>(preset_.videoBuffer);
    video_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    video_->thread_count = encodingThreads();
    FfmpegOptions options;
    options.set("preset", videoEncoderSpeed);
    options.set("profile", "high");
    options.set("crf", std::to_string(preset_.rateFactor));
    int status = avcodec_open2(video_.get(), codec, options.get());
    if (status >= 0) status = avcodec_parameters_from_context(videoStream_->codecpar, video_.get());
    videoStream_->time_base = video_->time_base;
    videoStream_->avg_frame_rate = video_->framerate;
    videoStream_->sample_aspect_ratio = {1, 1};
    return status;
}

int ClipWriter::writeHeader() {
    FfmpegOptions options;
    // QuickTime metadata keys store place, model and software unchanged.
    options.set("movflags", settings_.optimizesForNetworkUse ? "+faststart+use_metadata_tags" : "+use_metadata_tags");
    options.set("video_track_timescale", std::to_string(outputTicks));
    const int status = avformat_write_header(format_.get(), options.get());
    if (status < 0) return status;
    hasHeader_ = true;
    for (PacketPointer& packet : waiting_) {
        if (const int written = write(std::move(packet)); written < 0) return written;
    }
    waiting_.clear();
    return 0;
}

std::optional<NSError> ClipWriter::put(const AVFrame& frame, bool isVideo) {
    int status = 0;
    if (isVideo && !video_) {
        status = openVideoEncoder(frame);
        if (status >= 0) status = writeHeader();
    }
    if (status >= 0) status = isVideo ? encode(*video_, *videoStream_, &frame) : encode(*audio_, *audioStream_, &frame);
    if (status < 0) return ffmpegError("The clip cannot be written", status);
    if (isVideo) time_ = frame.pts;
    return std::nullopt;
}

int ClipWriter::encode(AVCodecContext& encoder, AVStream& stream, const AVFrame* frame) {
    int status = avcodec_send_frame(&encoder, frame);
    while (status >= 0) {
        PacketPointer packet(av_packet_alloc());
        if (!packet) return AVERROR(ENOMEM);
        status = avcodec_receive_packet(&encoder, packet.get());
        if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return 0;
        if (status < 0) return status;
        packet->stream_index = stream.index;
        if (hasHeader_) {
            status = write(std::move(packet));
        } else {
            waiting_.push_back(std::move(packet));
        }
    }
    return status;
}

int ClipWriter::write(PacketPointer packet) {
    const bool isVideo = packet->stream_index == videoStream_->index;
    const AVCodecContext& encoder = isVideo ? *video_ : *audio_;
    const AVStream& stream = isVideo ? *videoStream_ : *audioStream_;
    // Times are converted here, because the multiplexer may change a stream's clock when it writes the header.
    av_packet_rescale_ts(packet.get(), encoder.time_base, stream.time_base);
    return av_interleaved_write_frame(format_.get(), packet.get());
}

std::optional<NSError> ClipWriter::finish() {
    if (!video_) return NSError{"The clip has no picture that can be decoded."};
    int status = encode(*video_, *videoStream_, nullptr);
    if (status >= 0 && audio_) status = encode(*audio_, *audioStream_, nullptr);
    if (status >= 0) status = av_write_trailer(format_.get());
    if (status >= 0) {
        avio_flush(io_.get());
        status = io_->error;
    }
    if (status < 0) return ffmpegError("The clip cannot be written", status);
    return std::nullopt;
}

}  // namespace ostrel
