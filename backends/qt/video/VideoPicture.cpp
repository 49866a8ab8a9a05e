#include "backends/qt/video/VideoPicture.h"

#include <cmath>
#include <QPainter>
#include <QPainterPath>
#include <QThreadPool>
#include <utility>

namespace ostrel {

namespace {

/// A pool for conversions alone, so that no other work delays a frame. Usually one video plays at a time.
QThreadPool& converters() {
    static QThreadPool pool;
    static const bool isPrepared = [] {
        pool.setMaxThreadCount(2);
        pool.setObjectName(QStringLiteral("video frames"));
        return true;
    }();
    (void)isPrepared;
    return pool;
}

/// Clears the pixels of the picture, which is centred in its bounds, beyond the round corners.
void cutCorners(QImage& picture, const VideoPicture::Place& place) {
    const CornerClip& clip = *place.corners;
    const QPointF origin((place.bounds.width() - picture.width()) / 2, (place.bounds.height() - picture.height()) / 2);
    const auto pixels = [&](double points) { return points * place.scale; };
    const QRectF rect(pixels(clip.rect.minX()) - origin.x(), pixels(clip.rect.minY()) - origin.y(),
                      pixels(clip.rect.width()), pixels(clip.rect.height()));
    QPainterPath outside;
    outside.addRect(rect.adjusted(-1, -1, 1, 1));
    const QPainterPath inside = roundedPath(rect, pixels(clip.radius), clip.roundsTop, clip.roundsBottom);
    // All pixels are opaque, so the same bytes are valid in the other format.
    picture.reinterpretAsFormat(QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setCompositionMode(QPainter::CompositionMode_DestinationOut);
    painter.fillPath(outside.subtracted(inside), Qt::black);
}

}  // namespace

void VideoPicture::setFrame(const QVideoFrame& frame) {
    if (!frame.isValid()) return;
    const std::lock_guard lock(mutex_);
    frame_ = frame;
    ++frames_;
    isOutdated_ = true;
    startConverting();
}

void VideoPicture::setOrientation(VideoOrientation orientation) {
    const std::lock_guard lock(mutex_);
    awaitsOrientation_ = false;
    if (orientation_ != orientation) {
        orientation_ = orientation;
        isOutdated_ = frame_.isValid();
    }
    startConverting();
}

void VideoPicture::awaitOrientation() {
    const std::lock_guard lock(mutex_);
    awaitsOrientation_ = true;
}

VideoPicture::Shown VideoPicture::show(const Place& place, const std::function<void()>& changed) {
    const std::lock_guard lock(mutex_);
    isTaken_ = true;
    if (!place_ || !changed_) changed_ = changed;
    if (place_ != place) {
        place_ = place;
        isOutdated_ = frame_.isValid();
    }
    startConverting();
    return shown_;
}

void VideoPicture::hide() {
    const std::lock_guard lock(mutex_);
    place_.reset();
    changed_ = nullptr;
}

bool VideoPicture::isShown() const {
    const std::lock_guard lock(mutex_);
    return place_.has_value();
}

bool VideoPicture::hasFrame() const {
    const std::lock_guard lock(mutex_);
    return frame_.isValid();
}

std::uint64_t VideoPicture::frameCount() const {
    const std::lock_guard lock(mutex_);
    return frames_;
}

std::uint64_t VideoPicture::conversionCount() const {
    const std::lock_guard lock(mutex_);
    return shown_.sequence;
}

void VideoPicture::startConverting() {
    if (!isOutdated_ || !isTaken_ || isConverting_ || awaitsOrientation_ || !place_ || place_->bounds.isEmpty()) return;
    isConverting_ = true;
    converters().start([self = shared_from_this()] { self->convert(); });
}

void VideoPicture::convert() {
    std::unique_lock lock(mutex_);
    if (!place_) {
        isConverting_ = false;
        return;
    }
    const Place place = *place_;
    const QVideoFrame frame = frame_;
    VideoOrientation orientation = orientation_;
    isOutdated_ = false;
    lock.unlock();

    if (frame.rotationAngle() != QVideoFrame::Rotation0 || frame.mirrored()) {
        orientation.quarterTurns = static_cast<int>(frame.rotationAngle()) / 90;
        orientation.mirrored = frame.mirrored();
    }
    QImage picture = convertedFrame(frame, fittingSize(uprightSize(frame, orientation), place.bounds), orientation);
    if (!picture.isNull() && place.corners) cutCorners(picture, place);

    lock.lock();
    isConverting_ = false;
    if (picture.isNull()) return;
    shown_.picture = std::move(picture);
    ++shown_.sequence;
    isTaken_ = false;
    const auto changed = changed_;
    lock.unlock();
    if (changed) changed();
}

}  // namespace ostrel
