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

/// The picture that a playing video shows now. Frames come from the decoder's threads; the newest one is converted on a
/// thread of its own, at the size it is shown, once the picture before it was taken: what nobody looks at is not
/// converted, and a slow window skips frames instead of queueing them. Shown by one view at a time. Any thread.
class VideoPicture final : public std::enable_shared_from_this<VideoPicture> {
public:
    /// Where the picture is shown.
    struct Place {
        QSize bounds;                       ///< device pixels; the picture is aspect-fit in it
        double scale = 1;                   ///< device pixels a point
        std::optional<CornerClip> corners;  ///< in points from the upper left corner of the bounds
        friend bool operator==(const Place&, const Place&) = default;
    };
    struct Shown {
        QImage picture;              ///< null before the first frame
        std::uint64_t sequence = 0;  ///< counts pictures
    };

    /// From the decoder. Frames that are not valid are left out: the last one stays.
    void setFrame(const QVideoFrame& frame);
    /// Nothing is converted until the orientation is set.
    void awaitOrientation();
    /// What the file says of how its frames lie; frames that tell it themselves are not asked.
    void setOrientation(VideoOrientation orientation);
    /// The newest picture for `place`. From now on frames are converted for it, and `changed` is called, from any
    /// thread, when there is a newer one.
    Shown show(const Place& place, const std::function<void()>& changed);
    /// Nobody looks any more: nothing is converted until the next `show`.
    void hide();
    bool isShown() const;
    /// A frame has come.
    bool hasFrame() const;
    /// Frames that came, and those that were converted.
    std::uint64_t frameCount() const;
    std::uint64_t conversionCount() const;

private:
    void startConverting();
    void convert();

    mutable std::mutex mutex_;  // guards all below
    QVideoFrame frame_;
    VideoOrientation orientation_;
    std::optional<Place> place_;
    std::function<void()> changed_;
    Shown shown_;
    bool isTaken_ = true;      // the picture was given to the one who looks
    bool isOutdated_ = false;  // the picture is not of the last frame, orientation and place
    bool isConverting_ = false;
    bool awaitsOrientation_ = false;
    std::uint64_t frames_ = 0;
};

}  // namespace ostrel
