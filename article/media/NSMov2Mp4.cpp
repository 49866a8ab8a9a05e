#include "article/media/NSMov2Mp4.h"

#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/graphics/CGBitmapContext.h"
#include "platform/media/AVAssetImageGenerator.h"

#include <algorithm>
#include <atomic>
#include <numbers>

namespace ostrel {

namespace {

constexpr double secondsBetweenProgress = 0.1;

/// The timer that reports the progress of one conversion. The main run loop owns it; the export's thread stops it.
class ProgressTimer final : public std::enable_shared_from_this<ProgressTimer> {
public:
    void start(std::function<void()> tick) {
        timer_ = NSTimer::scheduledTimer(secondsBetweenProgress, true,
                                         [self = shared_from_this(), tick = std::move(tick)](NSTimer&) {
                                             // The timer may be due at the moment when the export ends, and must
                                             // not report progress afterwards.
                                             if (!self->isStopped_.load(std::memory_order_acquire)) tick();
                                         });
    }

    /// Any thread.
    void stop() {
        isStopped_.store(true, std::memory_order_release);
        if (!RunLoop::hasMain()) return;
        RunLoop::main().perform([self = shared_from_this()] {
            if (const auto timer = self->timer_.lock()) timer->invalidate();
        });
    }

private:
    std::atomic<bool> isStopped_{false};
    /// Main thread.
    std::weak_ptr<NSTimer> timer_;
};

std::string_view choosePreset(const std::vector<std::string>& offered) {
    for (const std::string_view preset : {AVAssetExportPresetMediumQuality, AVAssetExportPresetLowQuality}) {
        if (std::find(offered.begin(), offered.end(), preset) != offered.end()) return preset;
    }
    return {};
}

void finish(const AVAssetExportSession& session, ProgressTimer& timer, const NSMov2Mp4::Handler& handler) {
    switch (session.status()) {
    case AVAssetExportSessionStatus::completed:
        timer.stop();
        if (handler) handler(true, 1, std::nullopt);
        break;
    case AVAssetExportSessionStatus::failed:
    case AVAssetExportSessionStatus::cancelled:
        timer.stop();
        if (handler) handler(true, session.progress(), session.error());
        break;
    case AVAssetExportSessionStatus::unknown:
        // Kept on purpose: the handler hears of an end, and the timer still reports progress.
        if (handler) handler(true, session.progress(), session.error());
        break;
    case AVAssetExportSessionStatus::waiting:
    case AVAssetExportSessionStatus::exporting: break;
    }
}

}  // namespace

void NSMov2Mp4::convertMovSourceURL(const NSURL& sourceURL, const std::string& resultFile, Handler handler) {
    startConversion(sourceURL, resultFile, std::move(handler));
}

std::shared_ptr<AVAssetExportSession> NSMov2Mp4::startConversion(const NSURL& sourceURL, const std::string& resultFile,
                                                                 Handler handler) {
    const auto asset = AVAsset::assetWithURL(sourceURL);
    const std::string_view preset = choosePreset(AVAssetExportSession::exportPresetsCompatibleWithAsset(asset));
    if (preset.empty()) {
        NSLog("No sutiable video quality.");
        if (handler) handler(true, 0, std::nullopt);
        return nullptr;
    }
    auto session = std::make_shared<AVAssetExportSession>(asset, std::string(preset));
    session->setOutputURL(NSURL::fileURLWithPath(resultFile));
    session->setOutputFileType(AVFileTypeMPEG4);
    session->setShouldOptimizeForNetworkUse(true);

    auto timer = std::make_shared<ProgressTimer>();
    timer->start([session, handler] {
        if (handler) handler(false, session->progress(), std::nullopt);
    });
    session->exportAsynchronouslyWithCompletionHandler(
        [session, timer, handler = std::move(handler)] { finish(*session, *timer, handler); });
    return session;
}

bool NSMov2Mp4::mp4Information(const NSURL& url, std::shared_ptr<const UIImage>& image, float& duration) {
    const auto asset = AVAsset::assetWithURL(url);
    if (!asset) {
        NSLog("mp4Information AVAsset init failed.");
        return false;
    }
    duration = static_cast<float>(asset->duration().wholeSeconds());
    const auto generator = AVAssetImageGenerator::assetImageGeneratorWithAsset(asset);
    if (!generator) {
        NSLog("mp4Information AVAssetImageGenerator init failed.");
        return false;
    }
    const auto frame = generator->copyCGImageAtTime(CMTimeMake(0, 5));
    if (!frame) {
        NSLog("mp4Information copyCGImage failed.");
        return false;
    }
    const auto picture = UIImage::imageWithCGImage(frame);
    if (!picture) {
        NSLog("mp4Information imageWithCgImage failed.");
        return false;
    }
    const AVAssetTrack* track = asset->firstTrack(AVMediaType::video);
    const auto orientation =
        orientationOfTransform(track ? track->preferredTransform : CGAffineTransform{0, 0, 0, 0, 0, 0});
    if (orientation == UIImageOrientation::up) {
        image = picture;
        return true;
    }
    const auto rotated = rotateImage(picture, orientation);
    if (!rotated) {
        NSLog("mp4Information rotate image failed.");
        return false;
    }
    image = rotated;
    return true;
}

UIImageOrientation NSMov2Mp4::orientationOfTransform(const CGAffineTransform& transform) {
    const auto is = [&](CGFloat a, CGFloat b, CGFloat c, CGFloat d) {
        return transform.a == a && transform.b == b && transform.c == c && transform.d == d;
    };
    if (is(0, 1, -1, 0)) return UIImageOrientation::right;
    if (is(0, -1, 1, 0)) return UIImageOrientation::left;
    if (is(-1, 0, 0, -1)) return UIImageOrientation::down;
    return UIImageOrientation::up;
}

std::shared_ptr<const UIImage> NSMov2Mp4::rotateImage(const std::shared_ptr<const UIImage>& image,
                                                      UIImageOrientation orientation) {
    const auto bitmap = image ? image->cgImage() : nullptr;
    if (!bitmap) return nullptr;
    const auto width = static_cast<float>(bitmap->width()), height = static_cast<float>(bitmap->height());
    constexpr double pi = std::numbers::pi;
    double angle = 0;
    float offsetX = 0, offsetY = 0, factorX = 1, factorY = 1;
    bool isQuarterTurn = false;
    switch (orientation) {
    case UIImageOrientation::left:
        angle = pi / 2;
        offsetY = -height;
        isQuarterTurn = true;
        break;
    case UIImageOrientation::down:
        angle = pi;
        offsetX = -width;
        offsetY = -height;
        break;
    case UIImageOrientation::right:
        angle = 3 * pi / 2;
        offsetX = -width;
        isQuarterTurn = true;
        break;
    case UIImageOrientation::up: break;
    }
    // The picture is drawn into the rectangle of the canvas, which after a quarter turn has the other proportions; the
    // factors restore those of the picture.
    if (isQuarterTurn) {
        factorX = width / height;
        factorY = height / width;
    }
    const int canvasWidth = isQuarterTurn ? bitmap->height() : bitmap->width();
    const int canvasHeight = isQuarterTurn ? bitmap->width() : bitmap->height();
    const auto context = CGBitmapContext::make(canvasWidth, canvasHeight);
    if (!context) return nullptr;
    context->translateCTM(0, canvasHeight);
    context->scaleCTM(1, -1);
    context->rotateCTM(angle);
    context->translateCTM(offsetX, offsetY);
    context->scaleCTM(factorX, factorY);
    context->drawImage(CGRect(0, 0, canvasWidth, canvasHeight), *bitmap);
    return UIImage::imageWithCGImage(context->takeImage());
}

}  // namespace ostrel
