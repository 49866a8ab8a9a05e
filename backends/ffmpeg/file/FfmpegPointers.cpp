#include "backends/ffmpeg/file/FfmpegPointers.h"

#include <array>

extern "C" {
#include <libavutil/error.h>
}

namespace ostrel {

NSError ffmpegError(const std::string& what, int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    // Error numbers of the system are small; the library's own ones consist of four letters.
    constexpr int largestSystemError = 4096;
    const int systemError = AVUNERROR(code);
    return {what + ": " + text.data() + ".", systemError > 0 && systemError < largestSystemError ? systemError : 0};
}

}  // namespace ostrel
