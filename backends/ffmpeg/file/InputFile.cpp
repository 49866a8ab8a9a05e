#include "backends/ffmpeg/file/InputFile.h"

#include "backends/ffmpeg/file/IndexBeginning.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>

namespace ostrel {

namespace {

constexpr int readBufferSize = 64 * 1024;
/// A file with more streams is refused: cameras write up to about ten.
constexpr const char* largestStreamCount = "64";
/// How much of a file is probed for parameters that its index does not state.
constexpr const char* probedBytes = "5000000";
constexpr const char* analysedMicroseconds = "5000000";
constexpr const char* demultiplexers = "mov,mp4,m4a,3gp,3g2,mj2,matroska,webm,avi";

struct KnownDecoder {
    AVCodecID codec;
    // The name of the decoder; null: the library's default one.
    const char* name;
};

constexpr std::array knownDecoders{
    KnownDecoder{AV_CODEC_ID_H264, "h264"},     KnownDecoder{AV_CODEC_ID_HEVC, "hevc"},
    KnownDecoder{AV_CODEC_ID_VP8, "vp8"},       KnownDecoder{AV_CODEC_ID_VP9, "vp9"},
    KnownDecoder{AV_CODEC_ID_AV1, "libdav1d"},  KnownDecoder{AV_CODEC_ID_MPEG4, "mpeg4"},
    KnownDecoder{AV_CODEC_ID_MJPEG, "mjpeg"},   KnownDecoder{AV_CODEC_ID_PRORES, "prores"},
    KnownDecoder{AV_CODEC_ID_AAC, "aac"},       KnownDecoder{AV_CODEC_ID_MP3, "mp3float"},
    KnownDecoder{AV_CODEC_ID_MP2, "mp2float"},  KnownDecoder{AV_CODEC_ID_OPUS, "opus"},
    KnownDecoder{AV_CODEC_ID_VORBIS, "vorbis"}, KnownDecoder{AV_CODEC_ID_AC3, "ac3"},
    KnownDecoder{AV_CODEC_ID_EAC3, "eac3"},     KnownDecoder{AV_CODEC_ID_FLAC, "flac"},
    KnownDecoder{AV_CODEC_ID_ALAC, "alac"},
};

const std::string& decoderNames() {
    static const std::string names = [] {
        std::string list;
        for (const KnownDecoder& known : knownDecoders) list += std::string(known.name) + ",";
        void* position = nullptr;
        while (const AVCodec* codec = av_codec_iterate(&position)) {
            if (av_codec_is_decoder(codec) && std::strncmp(codec->name, "pcm_", 4) == 0)
                list += std::string(codec->name) + ",";
        }
        list.pop_back();
        return list;
    }();
    return names;
}

std::uint64_t bigEndian(const std::uint8_t* bytes, int count) {
    std::uint64_t value = 0;
    for (int i = 0; i < count; ++i) value = value << 8 | bytes[i];
    return value;
}

/// Compares the lengths of the boxes of the top level with the file's size. A box begins with 4 bytes of length and 4
/// of type; length 1 means that 8 bytes of length follow, 0 that the box reaches to the end.
bool isoFileIsCutShort(const InputFile& file) {
    // A fragmented file has two boxes per fragment. The boxes after this many are not checked.
    constexpr int largestBoxCount = 100'000;
    std::int64_t offset = 0;
    for (int box = 0; box < largestBoxCount && offset < file.size(); ++box) {
        std::array<std::uint8_t, 16> header{};
        const int got = file.read(offset, header.data(), static_cast<int>(header.size()));
        if (got < 8) return true;
        std::uint64_t length = bigEndian(header.data(), 4);
        if (length == 0) return false;
        if (length == 1) {
            if (got < 16) return true;
            length = bigEndian(header.data() + 8, 8);
        }
        // Some cameras pad the end with zeros or add bytes of their own that are no boxes.
        if (length < 8) return false;
        if (length > static_cast<std::uint64_t>(file.size() - offset)) return true;
        offset += static_cast<std::int64_t>(length);
    }
    return false;
}

/// Reads a length of EBML (RFC 8794) and moves `offset` behind it. The number of leading zero bits is the number of
/// further bytes; a length of ones only is not known.
std::optional<std::uint64_t> ebmlLength(const InputFile& file, std::int64_t& offset) {
    std::array<std::uint8_t, 8> bytes{};
    if (file.read(offset, bytes.data(), 1) != 1 || bytes[0] == 0) return std::nullopt;
    const int count = __builtin_clz(static_cast<unsigned>(bytes[0])) - 24 + 1;
    if (file.read(offset, bytes.data(), count) != count) return std::nullopt;
    offset += count;
    const std::uint64_t mask = (std::uint64_t{1} << (7 * count)) - 1;
    const std::uint64_t value = bigEndian(bytes.data(), count) & mask;
    return value == mask ? std::nullopt : std::optional(value);
}

bool matroskaFileIsCutShort(const InputFile& file) {
    std::int64_t offset = 4;
    const auto headerLength = ebmlLength(file, offset);
    if (!headerLength || *headerLength > static_cast<std::uint64_t>(file.size() - offset)) return false;
    offset += static_cast<std::int64_t>(*headerLength) + 4;
    const auto segmentLength = ebmlLength(file, offset);
    return segmentLength &&
           *segmentLength > static_cast<std::uint64_t>(std::max<std::int64_t>(0, file.size() - offset));
}

std::int64_t modificationTime(const struct stat& status) {
    return std::int64_t{status.st_mtim.tv_sec} * 1'000'000'000 + status.st_mtim.tv_nsec;
}

}  // namespace

const AVCodec* decoderFor(AVCodecID codec) {
    for (const KnownDecoder& known : knownDecoders) {
        if (known.codec == codec) return avcodec_find_decoder_by_name(known.name);
    }
    const AVCodec* decoder = avcodec_find_decoder(codec);
    return decoder && std::strncmp(decoder->name, "pcm_", 4) == 0 ? decoder : nullptr;
}

InputFile::InputFile(int descriptor, std::int64_t size, std::int64_t modified)
    : descriptor_(descriptor), size_(size), modified_(modified) {}

InputFile::~InputFile() { ::close(descriptor_); }

std::shared_ptr<const InputFile> InputFile::open(const std::string& path, std::optional<NSError>* error) {
    const auto fail = [&](const std::string& why, int code) -> std::shared_ptr<const InputFile> {
        if (error) *error = NSError{why, code};
        return nullptr;
    };
    if (path.empty()) return fail("The address leads to no file.", 0);
    // O_NONBLOCK: opening a pipe would otherwise block until its other end is opened.
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (descriptor < 0) return fail("The file cannot be opened: " + std::string(std::strerror(errno)) + ".", errno);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
        ::close(descriptor);
        return fail("This is no file.", 0);
    }
    return std::make_shared<const InputFile>(descriptor, status.st_size, modificationTime(status));
}

int InputFile::read(std::int64_t offset, std::uint8_t* bytes, int count) const {
    int got = 0;
    while (got < count) {
        const ssize_t part = ::pread(descriptor_, bytes + got, static_cast<std::size_t>(count - got), offset + got);
        if (part < 0 && errno == EINTR) continue;
        if (part < 0) return got > 0 ? got : AVERROR(errno);
        if (part == 0) break;
        got += static_cast<int>(part);
    }
    return got;
}

bool InputFile::isUnchanged() const {
    struct stat status {};
    return ::fstat(descriptor_, &status) == 0 && status.st_size == size_ && modificationTime(status) == modified_;
}

bool InputFile::isAt(const std::string& path) const {
    struct stat ours {
    }, theirs{};
    return ::fstat(descriptor_, &ours) == 0 && ::stat(path.c_str(), &theirs) == 0 && ours.st_dev == theirs.st_dev &&
           ours.st_ino == theirs.st_ino;
}

bool InputFile::isCutShort() const {
    std::array<std::uint8_t, 12> start{};
    if (read(0, start.data(), static_cast<int>(start.size())) != static_cast<int>(start.size())) return true;
    const auto isAtOffset = [&](std::size_t offset, const char* text) {
        return std::memcmp(start.data() + offset, text, std::strlen(text)) == 0;
    };
    if (isAtOffset(0, "\x1A\x45\xDF\xA3")) return matroskaFileIsCutShort(*this);
    if (isAtOffset(0, "RIFF")) {
        const std::uint64_t length = start[4] | start[5] << 8 | start[6] << 16 | std::uint64_t{start[7]} << 24;
        return length + 8 > static_cast<std::uint64_t>(size_);
    }
    return isoFileIsCutShort(*this);
}

InputReader::InputReader(std::shared_ptr<const InputFile> file, const std::atomic<bool>* interrupted)
    : file_(std::move(file)), interrupted_(interrupted) {}

InputReader::~InputReader() = default;

int InputReader::readPacket(void* self, std::uint8_t* bytes, int count) {
    auto& reader = *static_cast<InputReader*>(self);
    if (isInterrupted(self)) return AVERROR_EXIT;
    const int got = reader.file_->read(reader.position_, bytes, count);
    if (got <= 0) return got == 0 ? AVERROR_EOF : got;
    applyPatches(reader.patches_, reader.position_, bytes, got);
    reader.position_ += got;
    return got;
}

std::int64_t InputReader::seekTo(void* self, std::int64_t offset, int whence) {
    auto& reader = *static_cast<InputReader*>(self);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE: return reader.file_->size();
    case SEEK_SET: break;
    case SEEK_CUR: offset += reader.position_; break;
    case SEEK_END: offset += reader.file_->size(); break;
    default: return AVERROR(EINVAL);
    }
    if (offset < 0) return AVERROR(EINVAL);
    return reader.position_ = offset;
}

int InputReader::isInterrupted(void* self) {
    const std::atomic<bool>* interrupted = static_cast<InputReader*>(self)->interrupted_;
    return interrupted && interrupted->load(std::memory_order_relaxed) ? 1 : 0;
}

std::unique_ptr<InputReader> InputReader::open(std::shared_ptr<const InputFile> file, Detail detail,
                                               const std::atomic<bool>* interrupted, std::optional<NSError>* error) {
    const auto fail = [&](NSError why) -> std::unique_ptr<InputReader> {
        if (error) *error = std::move(why);
        return nullptr;
    };
    auto reader = std::make_unique<InputReader>(std::move(file), interrupted);
    if (detail == Detail::beginning) reader->patches_ = beginningOfIndex(*reader->file_);
    auto* buffer = static_cast<unsigned char*>(av_malloc(readBufferSize));
    if (!buffer) return fail(NSError{"Memory is short."});
    reader->io_.reset(avio_alloc_context(buffer, readBufferSize, 0, reader.get(), readPacket, nullptr, seekTo));
    if (!reader->io_) {
        av_free(buffer);
        return fail(NSError{"Memory is short."});
    }
    AVFormatContext* format = avformat_alloc_context();
    if (!format) return fail(NSError{"Memory is short."});
    format->pb = reader->io_.get();
    format->interrupt_callback = {isInterrupted, reader.get()};
    // A file may name other files, as playlists and reference files of QuickTime do; no such file is opened.
    format->io_open = [](AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) { return AVERROR(EPERM); };
    FfmpegOptions options;
    options.set("format_whitelist", demultiplexers);
    options.set("codec_whitelist", decoderNames());
    options.set("max_streams", largestStreamCount);
    options.set("probesize", probedBytes);
    options.set("analyzeduration", analysedMicroseconds);
    // The call frees the context when it fails.
    int status = avformat_open_input(&format, "", nullptr, options.get());
    // A shortened index may contradict other parts of the file; the whole index is tried then.
    if (status < 0 && !reader->patches_.empty()) return open(reader->file_, Detail::streams, interrupted, error);
    if (status < 0) return fail(ffmpegError("This is no clip of a known kind", status));
    reader->format_.reset(format);

    const bool isIsoFile = std::strstr(format->iformat->name, "mp4") != nullptr;
    const int video = reader->videoStream();
    // The size of MPEG-4 Part 2 pictures is stated in the data only.
    const bool statesSize = video < 0 || format->streams[video]->codecpar->width > 0;
    const bool statesAll =
        isIsoFile && detail == Detail::beginning && format->duration > 0 && format->nb_streams > 0 && statesSize;
    // A length that is not stated is the sum of all samples, so that the whole index is needed.
    if (!statesAll && !reader->patches_.empty()) return open(reader->file_, Detail::streams, interrupted, error);
    if (!statesAll) {
        status = avformat_find_stream_info(format, nullptr);
        if (status < 0) return fail(ffmpegError("The clip's streams cannot be read", status));
    }
    return reader;
}

int InputReader::videoStream() const {
    for (unsigned i = 0; i < format_->nb_streams; ++i) {
        const AVStream& stream = *format_->streams[i];
        const bool isStill = stream.disposition & (AV_DISPOSITION_ATTACHED_PIC | AV_DISPOSITION_TIMED_THUMBNAILS);
        if (stream.codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !isStill) return static_cast<int>(i);
    }
    return -1;
}

int InputReader::audioStream() const {
    int best = -1;
    const auto rank = [&](int index) {
        const AVStream& stream = *format_->streams[index];
        return std::make_tuple((stream.disposition & AV_DISPOSITION_DEFAULT) != 0,
                               stream.codecpar->ch_layout.nb_channels, stream.codecpar->bit_rate);
    };
    for (int i = 0; i < static_cast<int>(format_->nb_streams); ++i) {
        const AVCodecParameters& parameters = *format_->streams[i]->codecpar;
        // Some cameras add a track in a format of their own; a track without a decoder is skipped.
        if (parameters.codec_type != AVMEDIA_TYPE_AUDIO || !decoderFor(parameters.codec_id)) continue;
        if (best < 0 || rank(i) > rank(best)) best = i;
    }
    return best;
}

}  // namespace ostrel
