#pragma once

#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <atomic>
#include <cstdint>
#include <optional>
#include <vector>

namespace ostrel {

struct BytePatch;

/// A media file on disk, opened once: whatever happens to its name afterwards, it can be read to the end. Any number of
/// readers may use it at the same time, each with a position of its own.
class InputFile final {
public:
    /// Null when the path leads to no regular file that can be read.
    static std::shared_ptr<const InputFile> open(const std::string& path, std::optional<NSError>* error);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    std::int64_t size() const { return size_; }
    /// Bytes read at `offset`, fewer at the end; a negative error number of the library when reading fails.
    int read(std::int64_t offset, std::uint8_t* bytes, int count) const;
    /// True when the file is still as long and as old as when it was opened.
    bool isUnchanged() const;
    /// True when `path` names this very file.
    bool isAt(const std::string& path) const;
    /// True when the container states more bytes than there are: the file was cut short. ISO base media files (ISO/IEC
    /// 14496-12), Matroska (RFC 9559) and AVI say how long their parts are.
    bool isCutShort() const;

    InputFile(int descriptor, std::int64_t size, std::int64_t modified);

private:
    int descriptor_;
    std::int64_t size_;
    std::int64_t modified_;  // nanoseconds
};

/// One reader's way through an input file: the demultiplexer over it. One thread, but for `interrupt`.
class InputReader final {
public:
    enum class Detail {
        beginning,  ///< what the index says, and the first pictures; for MP4 and MOV nothing is decoded
        streams,    ///< everything; streams whose parameters only their data tell are looked into
    };

    /// Null when this is no media file of a known kind. `interrupted`, when given, ends reading early; it must outlive this.
    static std::unique_ptr<InputReader> open(std::shared_ptr<const InputFile> file, Detail detail,
                                             const std::atomic<bool>* interrupted,
                                             std::optional<NSError>* error);

    AVFormatContext& format() const { return *format_; }
    const std::shared_ptr<const InputFile>& sharedFile() const { return file_; }
    /// The first stream with a picture that moves; -1 when there is none.
    int videoStream() const;
    /// Of the streams with sound that can be decoded the default one, else that with the most channels, else that with
    /// the highest bit rate; -1 when there is none.
    int audioStream() const;
    /// Bytes of the file that have been read past.
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
    InputPointer format_;  // after io_: closed before it
};

/// The decoder for a kind of data, of those that are known to be safe and complete; null for others.
const AVCodec* decoderFor(AVCodecID codec);

}  // namespace ostrel
