#pragma once

#include "backends/ffmpeg/convert/ExportPreset.h"
#include "backends/ffmpeg/file/FfmpegPointers.h"
#include "backends/ffmpeg/file/OutputFile.h"

#include <atomic>
#include <optional>
#include <vector>

namespace ostrel {

/// The second half of an export: encodes pictures and sound and writes an MP4 file. One thread.
class ClipWriter final {
public:
    struct Settings {
        bool hasAudio = false;
        int sampleRate = 0;
        double frameRate = 0;
        bool optimizesForNetworkUse = false;
    };

    /// `interrupted` ends writing early; `interrupted` and `output` must outlive the writer. `source` gives the
    /// metadata.
    static std::unique_ptr<ClipWriter> make(OutputFile& output, const AVFormatContext& source,
                                            const ExportPreset& preset, const Settings& settings,
                                            const std::atomic<bool>& interrupted, std::optional<NSError>* error);
    ~ClipWriter();

    /// Encodes a frame; absent on success. The first picture decides the size and colours of the clip.
    std::optional<NSError> put(const AVFrame& frame, bool isVideo);
    /// Drains the encoders and completes the file's contents. Fails when no picture was put.
    std::optional<NSError> finish();
    /// The time of the last picture taken, in `outputTicks`.
    std::int64_t time() const { return time_; }

    ClipWriter(OutputFile& output, const ExportPreset& preset, const Settings& settings,
               const std::atomic<bool>& interrupted);

private:
    int openMultiplexer(const AVFormatContext& source);
    int openAudioEncoder();
    int openVideoEncoder(const AVFrame& first);
    int writeHeader();
    int encode(AVCodecContext& encoder, AVStream& stream, const AVFrame* frame);
    int write(PacketPointer packet);

    OutputFile& output_;
    const ExportPreset& preset_;
    Settings settings_;
    const std::atomic<bool>& interrupted_;
    std::int64_t position_ = 0;
    IoPointer io_;
    // Declared after io_, to which the format refers.
    OutputPointer format_;
    CodecPointer video_, audio_;
    AVStream* videoStream_ = nullptr;
    AVStream* audioStream_ = nullptr;
    /// Sound that came before the first picture. The file's header can be written only with the first picture.
    std::vector<PacketPointer> waiting_;
    bool hasHeader_ = false;
    std::int64_t time_ = 0;
};

}  // namespace ostrel
