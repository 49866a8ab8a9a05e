#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <functional>
#include <optional>

extern "C" {
#include <libavutil/audio_fifo.h>
}

namespace ostrel {

/// Converts decoded sound to the encoder's sampling rate and channels, in portions of 1,024 samples without gaps, from
/// time 0. Gaps of the source are filled with silence, and overlapping samples are dropped. One thread.
class AudioShaper final {
public:
    /// Receives portions in order, with times in samples; false ends the shaping.
    using Take = std::function<bool(FramePointer)>;

    AudioShaper(int sampleRate, int channels, std::int64_t longestSamples, Take take);
    ~AudioShaper();

    /// The rate (samples per second) to write for sound of `sampleRate`: the lowest rate of AAC that is not below it,
    /// at most `largestSampleRate`.
    static int outputRate(int sampleRate);
    static constexpr int samplesPerPortion = 1024;

    /// Takes a decoded frame that begins at `seconds`. False when shaping has ended or failed; a failure sets `error`.
    bool put(const AVFrame& frame, double seconds, std::optional<NSError>* error);
    /// Hands on the last portion, which may be shorter.
    bool finish(std::optional<NSError>* error);

private:
    bool prepare(const AVFrame& frame, std::optional<NSError>* error);
    bool flushResampler(std::optional<NSError>* error);
    bool convert(const std::uint8_t* const* samples, int count, std::optional<NSError>* error);
    bool addSilence(std::int64_t count, std::optional<NSError>* error);
    bool handOn(bool isLast, std::optional<NSError>* error);

    int sampleRate_, channels_;
    std::int64_t longestSamples_;
    Take take_;
    ResamplerPointer resampler_;
    AVAudioFifo* fifo_ = nullptr;
    int sourceRate_ = 0, sourceFormat_ = -1;
    AVChannelLayout sourceLayout_{};
    AVChannelLayout layout_{};
    /// Samples that were put into the fifo: the time, in samples, of the next one.
    std::int64_t written_ = 0;
    std::int64_t handedOn_ = 0;
};

}  // namespace ostrel
