#pragma once

#include "backends/qt/paint/DisplayList.h"
#include "backends/qt/video/VideoConversion.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <QImage>
#include <QSize>
#include <QVideoFrame>

namespace ostrel {

/// The current picture of a playing video. Frames come from the decoder's threads. The newest frame is converted on a
/// pool's thread, at the size at which it is shown, once the previous picture was taken. So a hidden video converts no
/// frames, and a slow window skips frames instead of queueing them. One view at a time shows the picture. Any thread.
class VideoPicture final : public std::enable_shared_from_this<VideoPicture> {
public:
    /// The place in which the picture is shown.
    struct Place {
        /// Device pixels; the picture is aspect-fit into the bounds.
        QSize bounds;
        /// Device pixels per point.
        double scale = 1;
        /// Points from the upper left corner of the bounds.
        std::optional<CornerClip> corners;
        friend bool operator==(const Place&, const Place&) = default;
    };
    struct Shown {
        /// Null before the first frame.
        QImage picture;
        /// The number of the picture, counted from 1.
        std::uint64_t sequence = 0;
    };

    /// Called by the decoder. A frame that is not valid is ignored: the last one stays.
    void setFrame(const QVideoFrame& frame);
    /// No frame is converted until `setOrientation` is called.
    void awaitOrientation();
    /// The orientation that the file states. A frame with an orientation of its own keeps that one.
    void setOrientation(VideoOrientation orientation);
    /// The newest picture. From now on frames are converted for `place`, and `changed` is called, on any thread, when a
    /// newer picture is ready.
    Shown show(const Place& place, const std::function<void()>& changed);
    /// The view is hidden: no frame is converted until the next `show`.
    void hide();
    bool isShown() const;
    /// At least one frame has come.
    bool hasFrame() const;
    /// The numbers of frames that came and that were converted.
    std::uint64_t frameCount() const;
    std::uint64_t conversionCount() const;

private:
    void startConverting();
    void convert();

    // Guards the members below.
    mutable std::mutex mutex_;
    QVideoFrame frame_;
    VideoOrientation orientation_;
    std::optional<Place> place_;
    std::function<void()> changed_;
    Shown shown_;
    // `show` has returned the picture.
    bool isTaken_ = true;
    // The picture does not show the last frame in the last orientation and place.
    bool isOutdated_ = false;
    bool isConverting_ = false;
    bool awaitsOrientation_ = false;
    std::uint64_t frames_ = 0;
};

}  // namespace ostrel
