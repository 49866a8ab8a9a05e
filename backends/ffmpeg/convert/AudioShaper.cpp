#include "backends/ffmpeg/convert/AudioShaper.h"

#include "backends/ffmpeg/convert/ExportPreset.h"

#include <algorithm>
#include <array>
#include <cmath>

extern "C" {
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
}

namespace ostrel {

namespace {

/// Seconds. Most containers round times, so a smaller difference is not a gap; nobody hears it.
constexpr double tolerance = 0.05;
constexpr AVSampleFormat format = AV_SAMPLE_FMT_FLTP;
/// The sampling frequencies of ISO/IEC 14496-3, up to `largestSampleRate`.
constexpr std::array rates{8000, 11025, 12000, 16000, 22050, 24000, 32000, 44100, 48000};
static_assert(rates.back() == largestSampleRate);

}  // namespace

int AudioShaper::outputRate(int sampleRate) {
    const auto rate = std::lower_bound(rates.begin(), rates.end(), sampleRate);
    return rate == rates.end() ? rates.back() : *rate;
}

AudioShaper::AudioShaper(int sampleRate, int channels, std::int64_t longestSamples, Take take)
    : sampleRate_(sampleRate),
      channels_(channels),
      longestSamples_(longestSamples),
      take_(std::move(take)),
      fifo_(av_audio_fifo_alloc(format, channels, samplesPerPortion)) {
    av_channel_layout_default(&layout_, channels);
}

AudioShaper::~AudioShaper() {
    if (fifo_) av_audio_fifo_free(fifo_);
    av_channel_layout_uninit(&sourceLayout_);
    av_channel_layout_uninit(&layout_);
}

bool AudioShaper::prepare(const AVFrame& frame, std::optional<NSError>* error) {
    if (resampler_ && frame.sample_rate == sourceRate_ && frame.format == sourceFormat_ &&
        av_channel_layout_compare(&frame.ch_layout, &sourceLayout_) == 0)
        return true;
    if (resampler_ && !flushResampler(error)) return false;
    resampler_ = nullptr;
    AVChannelLayout from{};
    // Sound without a stated channel layout gets the default one for its number of channels.
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
        av_channel_layout_default(&from, frame.ch_layout.nb_channels);
    } else if (av_channel_layout_copy(&from, &frame.ch_layout) < 0) {
        return false;
    }
    SwrContext* resampler = nullptr;
    int status = swr_alloc_set_opts2(&resampler, &layout_, format, sampleRate_, &from,
                                     static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    av_channel_layout_uninit(&from);
    resampler_.reset(resampler);
    if (status >= 0) status = swr_init(resampler);
    if (status >= 0) status = av_channel_layout_copy(&sourceLayout_, &frame.ch_layout);
    if (status < 0) {
        if (error) *error = ffmpegError("The sound cannot be converted", status);
        return false;
    }
    sourceRate_ = frame.sample_rate;
    sourceFormat_ = frame.format;
    return true;
}

bool AudioShaper::put(const AVFrame& frame, double seconds, std::optional<NSError>* error) {
    if (frame.nb_samples <= 0 || frame.sample_rate <= 0 || frame.ch_layout.nb_channels <= 0) return true;
    if (!fifo_ || !prepare(frame, error)) return false;
    const std::int64_t pending = swr_get_delay(resampler_.get(), sampleRate_);
    int skipped = 0;
    if (std::isfinite(seconds)) {
        const double gap = seconds - static_cast<double>(written_ + pending) / sampleRate_;
        if (gap > tolerance) {
            const double room = static_cast<double>(std::max<std::int64_t>(0, longestSamples_ - written_ - pending));
            if (!addSilence(static_cast<std::int64_t>(std::min(gap * sampleRate_, room)), error)) return false;
        } else if (gap < -tolerance) {
            const double overlap = std::min(-gap * frame.sample_rate, static_cast<double>(frame.nb_samples));
            skipped = static_cast<int>(overlap);
        }
    }
    if (skipped >= frame.nb_samples) return true;
    const auto sampleFormat = static_cast<AVSampleFormat>(frame.format);
    const bool isPlanar = av_sample_fmt_is_planar(sampleFormat);
    const int planes = isPlanar ? frame.ch_layout.nb_channels : 1;
    const int step = av_get_bytes_per_sample(sampleFormat) * (isPlanar ? 1 : frame.ch_layout.nb_channels);
    std::vector<const std::uint8_t*> samples(static_cast<std::size_t>(planes));
    for (std::size_t plane = 0; plane < samples.size(); ++plane)
        samples[plane] = frame.extended_data[plane] + static_cast<std::ptrdiff_t>(skipped) * step;
    return convert(samples.data(), frame.nb_samples - skipped, error) && handOn(false, error);
}

/// Converts `count` samples; null `samples` drains the resampler.
bool AudioShaper::convert(const std::uint8_t* const* samples, int count, std::optional<NSError>* error) {
    const int room = swr_get_out_samples(resampler_.get(), count);
    if (room <= 0) return true;
    FramePointer out(av_frame_alloc());
    int status = AVERROR(ENOMEM);
    if (out) {
        out->format = format;
        out->nb_samples = room;
        out->sample_rate = sampleRate_;
        status = av_channel_layout_copy(&out->ch_layout, &layout_);
        if (status >= 0) status = av_frame_get_buffer(out.get(), 0);
    }
    if (status >= 0)
        status =
            swr_convert(resampler_.get(), out->extended_data, room, const_cast<const std::uint8_t**>(samples), count);
    if (status > 0) {
        const auto fitting = static_cast<int>(std::clamp<std::int64_t>(longestSamples_ - written_, 0, status));
        status = av_audio_fifo_write(fifo_, reinterpret_cast<void**>(out->extended_data), fitting);
        if (status >= 0) written_ += fitting;
    }
    if (status < 0 && error) *error = ffmpegError("The sound cannot be converted", status);
    return status >= 0;
}

bool AudioShaper::flushResampler(std::optional<NSError>* error) { return convert(nullptr, 0, error); }

bool AudioShaper::addSilence(std::int64_t count, std::optional<NSError>* error) {
    FramePointer silence(av_frame_alloc());
    if (!silence) return false;
    silence->format = format;
    silence->nb_samples = samplesPerPortion;
    silence->sample_rate = sampleRate_;
    if (av_channel_layout_copy(&silence->ch_layout, &layout_) < 0 || av_frame_get_buffer(silence.get(), 0) < 0 ||
        av_samples_set_silence(silence->extended_data, 0, samplesPerPortion, channels_, format) < 0)
        return false;
    while (count > 0) {
        const int part = static_cast<int>(std::min<std::int64_t>(count, samplesPerPortion));
        if (av_audio_fifo_write(fifo_, reinterpret_cast<void**>(silence->extended_data), part) < 0) return false;
        written_ += part;
        count -= part;
        if (!handOn(false, error)) return false;
    }
    return true;
}

bool AudioShaper::handOn(bool isLast, std::optional<NSError>* error) {
    while (av_audio_fifo_size(fifo_) >= (isLast ? 1 : samplesPerPortion)) {
        FramePointer portion(av_frame_alloc());
        int status = AVERROR(ENOMEM);
        if (portion) {
            portion->format = format;
            portion->nb_samples = samplesPerPortion;
            portion->sample_rate = sampleRate_;
            portion->pts = handedOn_;
            status = av_channel_layout_copy(&portion->ch_layout, &layout_);
            if (status >= 0) status = av_frame_get_buffer(portion.get(), 0);
        }
        if (status >= 0)
            status = av_audio_fifo_read(fifo_, reinterpret_cast<void**>(portion->extended_data), samplesPerPortion);
        if (status < 0) {
            if (error) *error = ffmpegError("The sound cannot be converted", status);
            return false;
        }
        // The encoder accepts a shorter last portion.
        portion->nb_samples = status;
        handedOn_ += samplesPerPortion;
        if (!take_(std::move(portion))) return false;
    }
    return true;
}

bool AudioShaper::finish(std::optional<NSError>* error) {
    if (!resampler_) return true;
    return flushResampler(error) && handOn(true, error);
}

}  // namespace ostrel
