#include "backends/qt/video/VideoFileFacts.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstring>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

namespace ostrel {

namespace {

using SteadyClock = std::chrono::steady_clock;

int isTimeUp(void* end) { return SteadyClock::now() > *static_cast<SteadyClock::time_point*>(end); }

/// `stored` is the display matrix of a track (ISO/IEC 14496-12, 8.3.2), which maps a frame to the screen.
VideoOrientation orientationFrom(const std::int32_t* stored) {
    std::int32_t matrix[9];
    std::memcpy(matrix, stored, sizeof(matrix));
    VideoOrientation orientation;
    const double determinant = double(matrix[0]) * matrix[4] - double(matrix[1]) * matrix[3];
    if (determinant < 0) {
        // Without the mirroring, the matrix is a rotation.
        orientation.mirrored = true;
        matrix[0] = -matrix[0];
        matrix[3] = -matrix[3];
    }
    const double degrees = -av_display_rotation_get(matrix);
    if (std::isfinite(degrees)) {
        orientation.quarterTurns = (static_cast<int>(std::lround(degrees / 90)) % 4 + 4) % 4;
    }
    return orientation;
}

VideoOrientation orientationOf(const AVStream& stream) {
    VideoOrientation orientation;
    std::size_t size = 0;
    const auto* matrix =
        reinterpret_cast<const std::int32_t*>(av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &size));
    if (matrix && size >= 9 * sizeof(std::int32_t)) orientation = orientationFrom(matrix);
    const AVRational aspect =
        stream.sample_aspect_ratio.num > 0 ? stream.sample_aspect_ratio : stream.codecpar->sample_aspect_ratio;
    // Other shapes of pixels are faults of the file and are ignored.
    constexpr double least = 0.25, most = 4;
    if (aspect.num > 0 && aspect.den > 0) {
        const double ratio = av_q2d(aspect);
        if (ratio >= least && ratio <= most) orientation.pixelAspect = ratio;
    }
    return orientation;
}

}  // namespace

VideoOrientation videoOrientationOf(const std::string& url, double seconds) {
    AVFormatContext* context = avformat_alloc_context();
    if (!context) return {};
    SteadyClock::time_point end = SteadyClock::now() + std::chrono::duration_cast<SteadyClock::duration>(
                                                           std::chrono::duration<double>(std::max(0.0, seconds)));
    context->interrupt_callback = {isTimeUp, &end};
    // The call frees the context when it fails.
    if (avformat_open_input(&context, url.c_str(), nullptr, nullptr) < 0) return {};
    VideoOrientation orientation;
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVStream& stream = *context->streams[i];
        if (stream.codecpar->codec_type != AVMEDIA_TYPE_VIDEO) continue;
        orientation = orientationOf(stream);
        break;
    }
    avformat_close_input(&context);
    return orientation;
}

}  // namespace ostrel
