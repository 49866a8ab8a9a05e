#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

namespace ostrel {

struct BytePatch;

/// A media file on disk, opened once: it can be read to its end even if the file is renamed or removed. Any number of
/// readers may use the file at the same time, each with a position of its own.
class InputFile final {
public:
    /// Null when the path is not that of a regular file that can be read.
    static std::shared_ptr<const InputFile> open(const std::string& path, std::optional<NSError>* error);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::int64_t size() const { return size_; }
    /// Reads at `offset`. Returns the count of bytes, smaller at the end of the file, or a negative error number of the
    /// library.
    int read(std::int64_t offset, std::uint8_t* bytes, int count) const;
    /// True when size and modification time are those at the time of opening.
    bool isUnchanged() const;
    /// True when `path`, by whatever name or link, is the path of this file.
    bool isAt(const std::string& path) const;
    /// True when the container states more bytes than the file has: the file was cut short. ISO base media files
    /// (ISO/IEC 14496-12), Matroska (RFC 9559) and AVI state the lengths of their parts.
    bool isCutShort() const;

    InputFile(int descriptor, std::int64_t size, std::int64_t modified);

private:
    int descriptor_;
    std::int64_t size_;
    // Nanoseconds.
    std::int64_t modified_;
};

/// Reads an input file through a demultiplexer. One thread.
class InputReader final {
public:
    enum class Detail {
        /// The facts in the index and the first pictures. Streams of MP4 and MOV files are not probed.
        beginning,
        /// The whole file. Streams whose parameters only their data state are probed.
        streams,
    };

    /// Null when the file is not media of a known format. `interrupted`, when given, ends reading early; it must
    /// outlive the reader.
    static std::unique_ptr<InputReader> open(std::shared_ptr<const InputFile> file, Detail detail,
                                             const std::atomic<bool>* interrupted, std::optional<NSError>* error);

    AVFormatContext& format() const { return *format_; }
    const std::shared_ptr<const InputFile>& sharedFile() const { return file_; }
    /// The first stream of video that is no cover picture; -1 when there is none.
    int videoStream() const;
    /// The best stream of sound that can be decoded: the default one, else the one with the most channels, else the one
    /// with the highest bit rate; -1 when there is none.
    int audioStream() const;
    /// The position in the file, in bytes.
    std::int64_t position() const { return position_; }

    InputReader(std::shared_ptr<const InputFile> file, const std::atomic<bool>* interrupted);
    ~InputReader();

private:
    static int readPacket(void* self, std::uint8_t* bytes, int count);
    static std::int64_t seekTo(void* self, std::int64_t offset, int whence);
    static int isInterrupted(void* self);

    std::shared_ptr<const InputFile> file_;
    const std::atomic<bool>* interrupted_;
    std::vector<BytePatch> patches_;
    std::int64_t position_ = 0;
    IoPointer io_;
    // Declared after io_, because the format has to be closed first.
    InputPointer format_;
};

/// The decoder for a codec of the list of supported codecs; null for others.
const AVCodec* decoderFor(AVCodecID codec);

}  // namespace ostrel
