#include "backends/ffmpeg/convert/ClipReader.h"

#include "backends/ffmpeg/convert/FfmpegMediaFile.h"

#include <algorithm>
#include <cmath>
#include <thread>

namespace ostrel {

namespace {

/// The conversion fails when so many packets (nearly two minutes) gave no picture.
constexpr std::int64_t largestPacketCountWithoutPicture = 3000;
/// A longer clip is refused: its times are nearly always damaged.
constexpr double longestSeconds = 24 * 60 * 60;
/// Sound may end so many seconds after the stated duration of the clip.
constexpr double secondsBeyondDuration = 10;

/// zimg's options that look like libswscale's bicubic filter in half the time. Ordered dithering keeps gradients, as
/// libswscale's does. Chroma samples are placed in the middle, because a turn would move them to another side
/// otherwise.
constexpr const char* plainScaleOptions = ":filter=spline16:dither=ordered:cin=center:c=center";

/// Whether zimg can scale the frame directly, as it can for nearly all clips.
bool isPlainPicture(const AVFrame& frame) {
    static const bool hasZimg = avfilter_get_by_name("zscale") != nullptr;
    return hasZimg && frame.format == AV_PIX_FMT_YUV420P && frame.width % 2 == 0 && frame.height % 2 == 0;
}

/// Two threads more than cores, because a thread may wait for a reference frame or for the scaling of its picture.
/// Fewer when the pictures that the threads hold, two each, would take too much memory.
int decodingThreads(const AVCodecParameters& parameters) {
    constexpr std::int64_t largestThreadCount = 16, picturesEach = 2, largestBytes = std::int64_t{256} << 20;
    const std::int64_t pictureBytes =
        std::max<std::int64_t>(1, std::int64_t{parameters.width} * parameters.height * 3 / 2);
    const std::int64_t fitting =
        std::clamp<std::int64_t>(largestBytes / (pictureBytes * picturesEach), 2, largestThreadCount);
    const auto cores = static_cast<std::int64_t>(std::thread::hardware_concurrency());
    return static_cast<int>(std::min(std::max<std::int64_t>(1, cores) + 2, fitting));
}

}  // namespace

ClipReader::ClipReader(std::unique_ptr<InputReader> reader, const ExportPreset& preset)
    : reader_(std::move(reader)),
      preset_(preset),
      thinner_(outputTicks, preset.largestFrameRate),
      decoded_(av_frame_alloc()),
      filtered_(av_frame_alloc()) {}

std::unique_ptr<ClipReader> ClipReader::open(std::shared_ptr<const InputFile> file, const ExportPreset& preset,
                                             const std::atomic<bool>& interrupted, std::optional<NSError>* error) {
    if (file->isCutShort()) {
        if (error) *error = NSError{"The clip is incomplete: the file ends too early."};
        return nullptr;
    }
    auto input = InputReader::open(std::move(file), InputReader::Detail::streams, &interrupted, error);
    if (!input) return nullptr;
    auto reader = std::make_unique<ClipReader>(std::move(input), preset);
    if (!reader->openStreams(error)) return nullptr;
    return reader;
}

bool ClipReader::openStreams(std::optional<NSError>* error) {
    AVFormatContext& format = reader_->format();
    const int video = reader_->videoStream(), audio = reader_->audioStream();
    if (video < 0 || !decoded_ || !filtered_) {
        if (error) *error = NSError{"The clip has no pictures."};
        return false;
    }
    for (int i = 0; i < static_cast<int>(format.nb_streams); ++i)
        format.streams[i]->discard = i == video || i == audio ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    video_ = format.streams[video];
    videoDecoder_ = openDecoder(*video_, decodingThreads(*video_->codecpar), error);
    if (!videoDecoder_) return false;
    // The deblocking filter takes a tenth of the decoding time. It is skipped for pictures that are no reference of
    // others and are scaled to half the size or less, where it is not visible (SSIM is the same to the fourth digit).
    const PixelSize encoded{video_->codecpar->width, video_->codecpar->height};
    if (2 * fittedSize(encoded, 1, preset_.box).height <= encoded.height)
        videoDecoder_->skip_loop_filter = AVDISCARD_NONREF;
    if (audio >= 0) {
        // When the decoder of the sound cannot be opened, the clip is converted without sound.
        audio_ = format.streams[audio];
        audioDecoder_ = openDecoder(*audio_, 1, nullptr);
        if (audioDecoder_ && audio_->codecpar->sample_rate > 0) {
            sampleRate_ = AudioShaper::outputRate(audio_->codecpar->sample_rate);
        } else {
            audioDecoder_ = nullptr;
        }
    }
    start_ = format.start_time != AV_NOPTS_VALUE ? format.start_time : 0;
    if (audioDecoder_) {
        const double longest = duration() > 0 ? duration() + secondsBeyondDuration : longestSeconds;
        shaper_ = std::make_unique<AudioShaper>(sampleRate_, preset_.audioChannels,
                                                static_cast<std::int64_t>(longest * sampleRate_),
                                                [this](FramePointer portion) {
                                                    return queue_->push({false, std::move(portion)});
                                                });
    }
    return true;
}

double ClipReader::duration() const {
    const AVFormatContext& format = reader_->format();
    return format.duration > 0 ? std::min(longestSeconds, static_cast<double>(format.duration) / AV_TIME_BASE) : 0;
}

double ClipReader::frameRate() const {
    const AVRational stated = av_guess_frame_rate(&reader_->format(), video_, nullptr);
    const double rate = stated.num > 0 && stated.den > 0 ? av_q2d(stated) : preset_.largestFrameRate;
    return std::clamp(rate, 1.0, static_cast<double>(preset_.largestFrameRate));
}

std::optional<NSError> ClipReader::readInto(FrameQueue& queue) {
    queue_ = &queue;
    PacketPointer packet(av_packet_alloc());
    if (!packet) return NSError{"Memory is short."};
    bool isGoingOn = true;
    while (isGoingOn) {
        const int status = av_read_frame(&reader_->format(), packet.get());
        if (status == AVERROR_EOF) break;
        if (status < 0) {
            fail(ffmpegError("The clip cannot be read to its end", status));
            break;
        }
        if (packet->stream_index == video_->index) {
            isGoingOn = checkPacket(*packet) && decodeVideo(packet.get());
        } else if (audioDecoder_ && packet->stream_index == audio_->index) {
            isGoingOn = checkPacket(*packet) && decodeAudio(packet.get());
        }
        av_packet_unref(packet.get());
    }
    if (!error_ && isGoingOn) isGoingOn = decodeVideo(nullptr) && filter(nullptr);
    if (!error_ && isGoingOn && audioDecoder_ && decodeAudio(nullptr)) {
        std::optional<NSError> problem;
        if (!shaper_->finish(&problem) && problem) fail(*problem);
    }
    if (!error_ && isGoingOn && !reader_->sharedFile()->isUnchanged())
        fail(NSError{"The clip was changed while it was converted."});
    if (!error_) queue.close();
    return error_;
}

bool ClipReader::checkPacket(const AVPacket& packet) {
    if (!(packet.flags & AV_PKT_FLAG_CORRUPT)) return true;
    fail(NSError{"The clip is incomplete: the file ends too early."});
    return false;
}

bool ClipReader::decodeVideo(const AVPacket* packet) {
    // Packets that cannot be decoded are skipped; the conversion fails when no packet can be decoded.
    const int status = avcodec_send_packet(videoDecoder_.get(), packet);
    if (status == AVERROR(ENOMEM)) {
        fail(NSError{"Memory is short."});
        return false;
    }
    if (++packetsWithoutPicture_ > largestPacketCountWithoutPicture) {
        fail(NSError{"The clip has no picture that can be decoded."});
        return false;
    }
    while (avcodec_receive_frame(videoDecoder_.get(), decoded_.get()) >= 0) {
        packetsWithoutPicture_ = 0;
        const bool isTaken = takeVideo(*decoded_);
        av_frame_unref(decoded_.get());
        if (!isTaken) return false;
    }
    return true;
}

/// Converts the frame's time to the output's clock, and drops frames above the preset's frame rate.
bool ClipReader::takeVideo(AVFrame& frame) {
    std::int64_t source = frame.best_effort_timestamp;
    if (source == AV_NOPTS_VALUE) {
        const auto step = static_cast<std::int64_t>(1 / (frameRate() * av_q2d(video_->time_base)));
        source = lastSourceTime_ == AV_NOPTS_VALUE
                     ? av_rescale_q(start_, AVRational{1, AV_TIME_BASE}, video_->time_base)
                     : lastSourceTime_ + std::max<std::int64_t>(1, step);
    }
    lastSourceTime_ = source;
    std::int64_t time = av_rescale_q(source, video_->time_base, AVRational{1, outputTicks}) -
                        av_rescale_q(start_, AVRational{1, AV_TIME_BASE}, AVRational{1, outputTicks});
    if (lastTime_ < 0) time = std::max<std::int64_t>(0, time);
    if (time <= lastTime_) return true;
    if (static_cast<double>(time) > longestSeconds * outputTicks) {
        fail(NSError{"The clip is longer than a day."});
        return false;
    }
    lastTime_ = time;
    time_.store(time, std::memory_order_relaxed);
    if (!thinner_.keeps(time)) return true;
    frame.pts = time;
    frame.pict_type = AV_PICTURE_TYPE_NONE;
    if (!prepareGraph(frame)) return false;
    if (isPlain_) {
        // zimg refuses contradictory tags of colour. The tags are replaced; the samples do not change.
        frame.colorspace = colours_.matrix;
        frame.color_primaries = AVCOL_PRI_UNSPECIFIED;
        frame.color_trc = AVCOL_TRC_UNSPECIFIED;
        frame.color_range = AVCOL_RANGE_MPEG;
    }
    return filter(&frame);
}

bool ClipReader::prepareGraph(const AVFrame& frame) {
    if (frame.interlaced_frame && !isInterlaced_) {
        isInterlaced_ = true;
        if (graph_ && !filter(nullptr)) return false;
        graph_ = nullptr;
    }
    if (graph_ && graph_->takes(frame)) return true;
    if (graph_ && !filter(nullptr)) return false;
    if (!isPictureSizeSupported(frame.width, frame.height)) {
        fail(NSError{"The clip's pictures are of a size that is not supported."});
        return false;
    }
    std::optional<NSError> problem;
    graph_ = VideoGraph::make(frame, {1, outputTicks}, filterChain(frame), &problem);
    if (!graph_) fail(problem.value_or(NSError{"The pictures cannot be scaled."}));
    return graph_ != nullptr;
}

std::string ClipReader::filterChain(const AVFrame& frame) {
    const PictureTurn turn = PictureTurn::nearestTo(transformOfDisplayMatrix(displayMatrixOf(*video_)));
    // All pictures get the size of the first one, for which the encoder was set up.
    if (scaledSize_.width == 0) {
        AVFrame* unchanged = const_cast<AVFrame*>(&frame);
        const AVRational aspect = av_guess_sample_aspect_ratio(&reader_->format(), video_, unchanged);
        scaledSize_ =
            fittedSize({frame.width, frame.height}, aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1, preset_.box);
    }
    colours_ = ColourTreatment::of(frame);
    isPlain_ = isPlainPicture(frame) && !isInterlaced_ && colours_.filters.empty() && colours_.scaleOptions.empty();
    std::string chain;
    if (isInterlaced_) chain += "bwdif=mode=send_frame:parity=auto:deint=interlaced,";
    // Pictures are scaled before they are turned: turning a third of the side length is a ninth of the work.
    const std::string size = std::to_string(scaledSize_.width) + ":" + std::to_string(scaledSize_.height);
    chain +=
        isPlain_ ? "zscale=" + size + plainScaleOptions : "scale=" + size + ":flags=bicubic" + colours_.scaleOptions;
    if (!colours_.filters.empty()) chain += "," + colours_.filters;
    if (const std::string filters = turn.filters(); !filters.empty()) chain += "," + filters;
    return chain + ",format=yuv420p,setsar=1";
}

/// Filters a frame; null drains the filters.
bool ClipReader::filter(AVFrame* frame) {
    if (!graph_) return true;
    int status = graph_->push(frame);
    while (status >= 0) {
        status = graph_->pull(*filtered_);
        if (status < 0) break;
        const bool isTaken = takePicture(*filtered_);
        av_frame_unref(filtered_.get());
        if (!isTaken) return false;
    }
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) return true;
    fail(ffmpegError("The pictures cannot be scaled", status));
    return false;
}

bool ClipReader::takePicture(AVFrame& picture) {
    picture.pts = av_rescale_q(picture.pts, graph_->timeBase(), AVRational{1, outputTicks});
    picture.colorspace = colours_.matrix;
    picture.color_primaries = colours_.primaries;
    picture.color_trc = colours_.transfer;
    picture.color_range = AVCOL_RANGE_MPEG;
    FramePointer frame(av_frame_alloc());
    if (!frame) {
        fail(NSError{"Memory is short."});
        return false;
    }
    av_frame_move_ref(frame.get(), &picture);
    return queue_->push({true, std::move(frame)});
}

bool ClipReader::decodeAudio(const AVPacket* packet) {
    if (avcodec_send_packet(audioDecoder_.get(), packet) == AVERROR(ENOMEM)) {
        fail(NSError{"Memory is short."});
        return false;
    }
    while (avcodec_receive_frame(audioDecoder_.get(), decoded_.get()) >= 0) {
        const std::int64_t time = decoded_->best_effort_timestamp;
        const double seconds = time == AV_NOPTS_VALUE ? std::nan("")
                                                      : static_cast<double>(time) * av_q2d(audio_->time_base) -
                                                            static_cast<double>(start_) / AV_TIME_BASE;
        std::optional<NSError> problem;
        const bool isPut = shaper_->put(*decoded_, seconds, &problem);
        av_frame_unref(decoded_.get());
        if (problem) fail(*problem);
        if (!isPut) return false;
    }
    return true;
}

}  // namespace ostrel
