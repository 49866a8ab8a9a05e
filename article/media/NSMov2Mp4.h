#pragma once

#include "platform/foundation/values/NSError.h"
#include "platform/foundation/values/NSURL.h"
#include "platform/graphics/UIImage.h"
#include "platform/media/AVAssetExportSession.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

/// The quarter turns that bring a stored picture upright; the numbers are UIKit's image orientations.
enum class UIImageOrientation { up = 0, down = 1, left = 2, right = 3 };

/// Converts a picked clip to an MP4 file of modest quality, and inspects such files. Objects of the class have no
/// state. Each failure is logged in one line.
class NSMov2Mp4 final {
public:
    /// `progress`: 0 to 1. `finished` says that the conversion ended, also when it failed: `error` then says why there
    /// is no file.
    using Handler = std::function<void(bool finished, float progress, const std::optional<NSError>& error)>;

    /// Starts to convert the clip to the file `resultFile`, with medium quality where the clip offers it, else with low
    /// quality. Every 0.1 seconds the handler is called on the main thread with `finished` false. When the export ends,
    /// the handler is called once with `finished` true, on the export's thread; both calls may run at the same time. If
    /// the clip offers neither quality, the handler is called once, before this operation returns, with (true, 0, no
    /// error), and no file is written. Main thread.
    void convertMovSourceURL(const NSURL& sourceURL, const std::string& resultFile, Handler handler);
    /// Does the same and returns the running export, so that the caller can cancel it; null when the clip offers
    /// neither quality.
    std::shared_ptr<AVAssetExportSession> startConversion(const NSURL& sourceURL, const std::string& resultFile,
                                                          Handler handler);

    /// Reads the length of a video file, in whole seconds without the fraction, and its first frame, upright. Returns
    /// whether there is a picture. `duration` is set as soon as the file could be opened, `image` only when true is
    /// returned. Works on the calling thread.
    bool mp4Information(const NSURL& url, std::shared_ptr<const UIImage>& image, float& duration);

    /// The picture rotated upright from `orientation`, as a bitmap of its own; null when the picture has no pixels.
    std::shared_ptr<const UIImage> rotateImage(const std::shared_ptr<const UIImage>& image,
                                               UIImageOrientation orientation);

    /// The orientation that a track's transform means. Only a, b, c and d of the transform count. Kept on purpose: any
    /// transform other than the three exact quarter turns, a mirrored one included, counts as upright.
    static UIImageOrientation orientationOfTransform(const CGAffineTransform& transform);
};

}  // namespace ostrel
