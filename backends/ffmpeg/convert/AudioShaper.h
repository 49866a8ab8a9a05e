#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <functional>
#include <optional>

extern "C" {
#include <libavutil/audio_fifo.h>
}

namespace ostrel {

/// Brings decoded sound into the form that the encoder takes: its rate, its channels, portions of 1,024 samples without
/// gaps, from time 0. Where the source leaves a gap there is silence; what overlaps is left out. One thread.
class AudioShaper final {
public:
    /// Receives portions in order, their times in samples; false ends the shaping.
    using Take = std::function<bool(FramePointer)>;

    AudioShaper(int sampleRate, int channels, std::int64_t longestSamples, Take take);
    ~AudioShaper();

    /// The rate to write for sound of `sampleRate` samples a second: the same when AAC has it and `largestSampleRate` is
    /// not exceeded, else the next one above that it has.
    static int outputRate(int sampleRate);
    static constexpr int samplesPerPortion = 1024;

    /// Takes a decoded frame that begins at `seconds`. False when shaping has ended or failed; `error` says why it failed.
    bool put(const AVFrame& frame, double seconds, std::optional<NSError>* error);
    /// The last, shorter portion, filled up with silence.
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
    /// Samples put into the fifo so far: the time at which the next one is heard.
    std::int64_t written_ = 0;
    std::int64_t handedOn_ = 0;
};

}  // namespace ostrel
