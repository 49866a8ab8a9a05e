#include "tests/backends/ffmpeg/ClipProbe.h"

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <algorithm>
#include <fstream>
#include <sstream>

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace ostrel {

namespace {

double meanLuma(const AVFrame& frame) {
    double sum = 0;
    for (int y = 0; y < frame.height; ++y) {
        for (int x = 0; x < frame.width; ++x) sum += frame.data[0][std::ptrdiff_t{y} * frame.linesize[0] + x];
    }
    return sum / (static_cast<double>(frame.width) * frame.height);
}

struct Track {
    AVStream* stream = nullptr;
    CodecPointer decoder;
};

Track openTrack(AVFormatContext& format, AVMediaType type) {
    Track track;
    const int index = av_find_best_stream(&format, type, -1, -1, nullptr, 0);
    if (index < 0) return track;
    track.stream = format.streams[index];
    track.decoder.reset(avcodec_alloc_context3(nullptr));
    avcodec_parameters_to_context(track.decoder.get(), track.stream->codecpar);
    track.decoder->pkt_timebase = track.stream->time_base;
    if (avcodec_open2(track.decoder.get(), avcodec_find_decoder(track.stream->codecpar->codec_id), nullptr) < 0)
        track.decoder = nullptr;
    return track;
}

bool decode(Track& track, const AVPacket* packet, ProbedClip& clip) {
    const int sent = avcodec_send_packet(track.decoder.get(), packet);
    if (sent < 0 && sent != AVERROR_EOF) return false;
    FramePointer frame(av_frame_alloc());
    while (avcodec_receive_frame(track.decoder.get(), frame.get()) >= 0) {
        if (track.stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            clip.audioSeconds += static_cast<double>(frame->nb_samples) / frame->sample_rate;
            continue;
        }
        if (clip.frames++ == 0)
            clip.firstFrame = static_cast<double>(frame->best_effort_timestamp) * av_q2d(track.stream->time_base);
        clip.brightness.push_back(meanLuma(*frame));
    }
    return true;
}

}  // namespace

std::optional<ProbedClip> probeClip(const std::string& path) {
    AVFormatContext* opened = nullptr;
    if (avformat_open_input(&opened, path.c_str(), nullptr, nullptr) < 0) return std::nullopt;
    const InputPointer format(opened);
    if (avformat_find_stream_info(opened, nullptr) < 0) return std::nullopt;
    Track video = openTrack(*opened, AVMEDIA_TYPE_VIDEO), audio = openTrack(*opened, AVMEDIA_TYPE_AUDIO);
    if (!video.decoder) return std::nullopt;

    ProbedClip clip;
    const AVCodecParameters& parameters = *video.stream->codecpar;
    const auto text = [](const char* name) { return std::string(name ? name : ""); };
    clip.videoCodec = avcodec_get_name(parameters.codec_id);
    clip.profile = parameters.profile;
    clip.pixelFormat = text(av_get_pix_fmt_name(static_cast<AVPixelFormat>(parameters.format)));
    clip.matrix = text(av_color_space_name(parameters.color_space));
    clip.range = text(av_color_range_name(parameters.color_range));
    clip.transfer = text(av_color_transfer_name(parameters.color_trc));
    clip.width = parameters.width;
    clip.height = parameters.height;
    clip.duration = static_cast<double>(opened->duration) / AV_TIME_BASE;
    clip.isTurned = av_stream_get_side_data(video.stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr) != nullptr;
    if (audio.stream) {
        clip.audioCodec = avcodec_get_name(audio.stream->codecpar->codec_id);
        clip.channels = audio.stream->codecpar->ch_layout.nb_channels;
    }
    for (const AVDictionaryEntry* entry = nullptr;
         (entry = av_dict_get(opened->metadata, "", entry, AV_DICT_IGNORE_SUFFIX));)
        clip.metadata[entry->key] = entry->value;

    PacketPointer packet(av_packet_alloc());
    std::vector<double> times;
    while (av_read_frame(opened, packet.get()) >= 0) {
        bool isDecoded = true;
        if (packet->stream_index == video.stream->index) {
            clip.videoBytes += packet->size;
            times.push_back(static_cast<double>(packet->pts) * av_q2d(video.stream->time_base));
            isDecoded = decode(video, packet.get(), clip);
        } else if (audio.decoder && packet->stream_index == audio.stream->index) {
            isDecoded = decode(audio, packet.get(), clip);
        }
        av_packet_unref(packet.get());
        if (!isDecoded) return std::nullopt;
    }
    decode(video, nullptr, clip);
    if (audio.decoder) decode(audio, nullptr, clip);
    std::sort(times.begin(), times.end());
    for (std::size_t i = 30; i < times.size(); ++i)
        clip.largestFrameRate = std::max(clip.largestFrameRate, 30 / (times[i] - times[i - 30]));

    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    clip.isIndexInFront = bytes.str().find("moov") < bytes.str().find("mdat");
    return clip;
}

}  // namespace ostrel
