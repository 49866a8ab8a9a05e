#pragma once

#include "platform/foundation/values/NSError.h"
#include "platform/foundation/values/NSURL.h"
#include "platform/graphics/UIImage.h"
#include "platform/media/AVAssetExportSession.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

/// How a stored picture is to be turned to stand upright; the numbers are UIKit's image orientations.
enum class UIImageOrientation { up = 0, down = 1, left = 2, right = 3 };

/// Makes an MP4 file of modest quality of a picked clip, and inspects such files. It has no state; a fresh one is made for
/// each use. What fails is logged in one line.
class NSMov2Mp4 final {
public:
    /// `progress`: 0 to 1. `finished` does not mean succeeded: `error`, when present, says why there is no file.
    using Handler = std::function<void(bool finished, float progress, const std::optional<NSError>& error)>;

    /// Starts to convert the clip into the file `resultFile`, with medium quality where that is offered, else low. The
    /// handler is called every 0.1 seconds on the main thread with `finished` false, and once with true when the export
    /// has ended: on the export's thread, so that both may be called at the same time. Without a fitting quality it is
    /// called once, at once, with (true, 0, no error), and no file is written. Main thread.
    void convertMovSourceURL(const NSURL& sourceURL, const std::string& resultFile, Handler handler);
    /// The same; returns the running export, with which it can be cancelled, or null when no quality was offered.
    std::shared_ptr<AVAssetExportSession> startConversion(const NSURL& sourceURL,
                                                          const std::string& resultFile, Handler handler);

    /// Reads the length of a video file in seconds, whole ones, the fraction dropped, and its first frame, upright. True
    /// when there is a picture; `duration` is set before anything about the picture can fail, `image` only then. On the
    /// calling thread.
    bool mp4Information(const NSURL& url, std::shared_ptr<const UIImage>& image, float& duration);

    /// The picture turned from `orientation` to upright, as a bitmap of its own; null without pixels.
    std::shared_ptr<const UIImage> rotateImage(const std::shared_ptr<const UIImage>& image,
                                               UIImageOrientation orientation);

    /// The orientation that a track's transform stands for. Only its a, b, c and d count, and only the three quarter turns,
    /// exactly, are known: everything else, mirrored pictures included, is taken as upright.
    static UIImageOrientation orientationOfTransform(const CGAffineTransform& transform);
};

}  // namespace ostrel
