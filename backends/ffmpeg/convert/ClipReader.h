#pragma once

#include "backends/ffmpeg/convert/AudioShaper.h"
#include "backends/ffmpeg/convert/ExportPreset.h"
#include "backends/ffmpeg/convert/FrameQueue.h"
#include "backends/ffmpeg/convert/FrameThinner.h"
#include "backends/ffmpeg/convert/VideoGraph.h"
#include "backends/ffmpeg/file/InputFile.h"

#include <atomic>

namespace ostrel {

/// The first half of an export: reads and decodes a clip, turns and scales its pictures, converts their colours and the
/// sound, and puts both into a queue. One thread makes the reader, then one thread uses it.
class ClipReader final {
public:
    /// Null when the clip cannot be read. `interrupted` ends all work early; it must outlive the reader.
    static std::unique_ptr<ClipReader> open(std::shared_ptr<const InputFile> file, const ExportPreset& preset,
                                            const std::atomic<bool>& interrupted, std::optional<NSError>* error);

    /// Reads to the end, then closes `queue`. Absent on success, and when the queue was stopped.
    std::optional<NSError> readInto(FrameQueue& queue);

    const AVFormatContext& format() const { return reader_->format(); }
    bool hasAudio() const { return audioDecoder_ != nullptr; }
    /// The sampling rate of the sound in the queue.
    int sampleRate() const { return sampleRate_; }
    /// The frame rate of the pictures in the queue, computed from the rate that the clip states; 1 to the preset's
    /// largest.
    double frameRate() const;
    /// Seconds; 0 when the clip does not state its duration.
    double duration() const;
    /// The time of the last picture that was decoded, in `outputTicks`. Any thread.
    std::int64_t time() const { return time_.load(std::memory_order_relaxed); }

    ClipReader(std::unique_ptr<InputReader> reader, const ExportPreset& preset);

private:
    bool openStreams(std::optional<NSError>* error);
    bool decodeVideo(const AVPacket* packet);
    bool decodeAudio(const AVPacket* packet);
    bool takeVideo(AVFrame& frame);
    bool filter(AVFrame* frame);
    bool takePicture(AVFrame& picture);
    bool prepareGraph(const AVFrame& frame);
    std::string filterChain(const AVFrame& frame);
    bool checkPacket(const AVPacket& packet);
    void fail(NSError error) {
        if (!error_) error_ = std::move(error);
    }

    std::unique_ptr<InputReader> reader_;
    const ExportPreset& preset_;
    AVStream* video_ = nullptr;
    AVStream* audio_ = nullptr;
    CodecPointer videoDecoder_, audioDecoder_;
    std::unique_ptr<VideoGraph> graph_;
    std::unique_ptr<AudioShaper> shaper_;
    FrameThinner thinner_;
    FramePointer decoded_, filtered_;
    PixelSize scaledSize_;
    ColourTreatment colours_;
    bool isInterlaced_ = false;
    /// Pictures are scaled by zimg, which is faster than libswscale but supports fewer formats.
    bool isPlain_ = false;
    int sampleRate_ = 0;
    /// Microseconds: the time in the source that becomes 0.
    std::int64_t start_ = 0;
    std::int64_t lastSourceTime_ = AV_NOPTS_VALUE, lastTime_ = -1;
    std::atomic<std::int64_t> time_{0};
    std::int64_t packetsWithoutPicture_ = 0;
    FrameQueue* queue_ = nullptr;
    std::optional<NSError> error_;
};

}  // namespace ostrel
