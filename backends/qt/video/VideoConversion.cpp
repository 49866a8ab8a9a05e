#include "backends/qt/video/VideoConversion.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <memory>
#include <QTransform>
#include <QVideoFrameFormat>

extern "C" {
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

namespace ostrel {

namespace {

// Lines: video of this height or more is BT.709 when the frame states no matrix.
constexpr int highDefinition = 720;

AVPixelFormat formatOf(QVideoFrameFormat::PixelFormat format) {
    using F = QVideoFrameFormat;
    switch (format) {
    case F::Format_ARGB8888: return AV_PIX_FMT_ARGB;
    case F::Format_XRGB8888: return AV_PIX_FMT_0RGB;
    case F::Format_BGRA8888: return AV_PIX_FMT_BGRA;
    case F::Format_BGRX8888: return AV_PIX_FMT_BGR0;
    case F::Format_ABGR8888: return AV_PIX_FMT_ABGR;
    case F::Format_XBGR8888: return AV_PIX_FMT_0BGR;
    case F::Format_RGBA8888: return AV_PIX_FMT_RGBA;
    case F::Format_RGBX8888: return AV_PIX_FMT_RGB0;
    case F::Format_YUV420P: return AV_PIX_FMT_YUV420P;
    case F::Format_YUV422P: return AV_PIX_FMT_YUV422P;
    case F::Format_YV12: return AV_PIX_FMT_YUV420P;
    case F::Format_UYVY: return AV_PIX_FMT_UYVY422;
    case F::Format_YUYV: return AV_PIX_FMT_YUYV422;
    case F::Format_NV12: return AV_PIX_FMT_NV12;
    case F::Format_NV21: return AV_PIX_FMT_NV21;
    case F::Format_Y8: return AV_PIX_FMT_GRAY8;
    case F::Format_Y16: return AV_PIX_FMT_GRAY16LE;
    case F::Format_P010: return AV_PIX_FMT_P010LE;
    case F::Format_P016: return AV_PIX_FMT_P016LE;
    case F::Format_YUV420P10: return AV_PIX_FMT_YUV420P10LE;
    default: return AV_PIX_FMT_NONE;
    }
}

int matrixOf(const QVideoFrameFormat& format) {
    switch (format.colorSpace()) {
    case QVideoFrameFormat::ColorSpace_BT601: return SWS_CS_ITU601;
    case QVideoFrameFormat::ColorSpace_BT709: return SWS_CS_ITU709;
    case QVideoFrameFormat::ColorSpace_BT2020: return SWS_CS_BT2020;
    default: return format.frameHeight() >= highDefinition ? SWS_CS_ITU709 : SWS_CS_ITU601;
    }
}

struct ContextCloser {
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};

/// The thread's context of the last conversion, kept because making one takes longer than converting a small frame.
SwsContext* contextFor(QSize from, AVPixelFormat format, QSize to) {
    thread_local std::unique_ptr<SwsContext, ContextCloser> kept;
    kept.reset(sws_getCachedContext(kept.release(), from.width(), from.height(), format, to.width(), to.height(),
                                    AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr));
    return kept.get();
}

/// A picture with padding behind each line: libswscale writes whole vectors.
QImage paddedPicture(QSize size) {
    constexpr std::size_t vector = 64;
    const std::size_t stride = (std::size_t(size.width()) * 4 + vector - 1) / vector * vector + vector;
    void* const bytes = std::aligned_alloc(vector, stride * std::size_t(size.height()));
    if (!bytes) return {};
    return QImage(static_cast<uchar*>(bytes), size.width(), size.height(), static_cast<qsizetype>(stride),
                  QImage::Format_RGB32, std::free, bytes);
}

bool scaleInto(QImage& picture, QVideoFrame& frame, AVPixelFormat format) {
    const QVideoFrameFormat surface = frame.surfaceFormat();
    SwsContext* const context = contextFor(frame.size(), format, picture.size());
    if (!context) return false;
    const bool isFull = surface.colorRange() == QVideoFrameFormat::ColorRange_Full;
    // The call fails for RGB frames, which need no matrix.
    sws_setColorspaceDetails(context, sws_getCoefficients(matrixOf(surface)), isFull,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, 1 << 16, 1 << 16);
    const std::uint8_t* planes[4] = {};
    int strides[4] = {};
    for (int i = 0; i < std::min(frame.planeCount(), 4); ++i) {
        planes[i] = frame.bits(i);
        strides[i] = frame.bytesPerLine(i);
    }
    if (surface.pixelFormat() == QVideoFrameFormat::Format_YV12) {
        std::swap(planes[1], planes[2]);
        std::swap(strides[1], strides[2]);
    }
    if (!planes[0]) return false;
    std::uint8_t* const lines[4] = {picture.bits()};
    const int pitch[4] = {static_cast<int>(picture.bytesPerLine())};
    return sws_scale(context, planes, strides, 0, frame.height(), lines, pitch) > 0;
}

}  // namespace

QSize uprightSize(const QVideoFrame& frame, VideoOrientation orientation) {
    QSize size = frame.size();
    size.setWidth(static_cast<int>(std::lround(size.width() * orientation.pixelAspect)));
    return orientation.quarterTurns % 2 ? size.transposed() : size;
}

QSize fittingSize(QSize size, QSize bounds) {
    if (size.isEmpty() || bounds.isEmpty()) return {1, 1};
    const double scale = std::min(double(bounds.width()) / size.width(), double(bounds.height()) / size.height());
    const auto side = [&](int length, int most) {
        return std::clamp(static_cast<int>(std::lround(length * scale)), 1, most);
    };
    return {side(size.width(), bounds.width()), side(size.height(), bounds.height())};
}

QImage convertedFrame(const QVideoFrame& shown, QSize size, VideoOrientation orientation) {
    QVideoFrame frame = shown;
    if (!frame.isValid() || size.isEmpty() || frame.size().isEmpty()) return {};
    const QSize stored = orientation.quarterTurns % 2 ? size.transposed() : size;
    const AVPixelFormat format = formatOf(frame.pixelFormat());
    QImage picture;
    if (format == AV_PIX_FMT_NONE) {
        picture = frame.toImage().scaled(stored, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        picture.convertTo(QImage::Format_RGB32);
    } else if (frame.map(QVideoFrame::ReadOnly)) {
        picture = paddedPicture(stored);
        const bool isDone = !picture.isNull() && scaleInto(picture, frame, format);
        frame.unmap();
        if (!isDone) return {};
    }
    if (picture.isNull()) return {};
    if (orientation.quarterTurns) {
        picture = picture.transformed(QTransform().rotate(90 * orientation.quarterTurns));
    }
    if (orientation.mirrored) picture.mirror(true, false);
    return picture;
}

}  // namespace ostrel
