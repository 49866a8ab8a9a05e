#pragma once

#include "platform/foundation/values/NSError.h"
#include "platform/foundation/values/NSURL.h"
#include "platform/graphics/CGImage.h"
#include "platform/graphics/Geometry.h"
#include "platform/media/AVMetadataItem.h"
#include "platform/media/CMTime.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

enum class AVMediaType { video, audio, other };

/// One track of a media file.
struct AVAssetTrack {
    AVMediaType mediaType = AVMediaType::other;
    /// The size in encoded pixels, before the transform; zero for other tracks than video.
    CGSize naturalSize;
    /// From encoded pixels to the upright picture; x to the right, y downwards.
    CGAffineTransform preferredTransform;
};

/// The state of an export; the numbers are those of AVFoundation.
enum class AVAssetExportSessionStatus {
    unknown = 0,
    waiting = 1,
    exporting = 2,
    completed = 3,
    failed = 4,
    cancelled = 5
};

/// The preset and the output of an export.
struct MediaExportRequest {
    std::string presetName;
    /// The file appears here only when it is complete, and only then replaces an existing file.
    std::string outputPath;
    /// Whether the index precedes the media data, so that a player can start while the file is still
    /// downloading.
    bool optimizesForNetworkUse = false;
};

/// One export. It keeps itself alive until its completion has run. Any thread.
class MediaExport {
public:
    virtual ~MediaExport() = default;

    /// May be called once. `completion` runs exactly once, on the export's own thread, when the status is
    /// final.
    virtual void start(std::function<void()> completion) = 0;
    /// The export ends soon with the status `cancelled` and without a file. Does nothing after the end.
    virtual void cancel() = 0;
    virtual AVAssetExportSessionStatus status() const = 0;
    /// 0 to 1, never decreasing.
    virtual float progress() const = 0;
    /// The reason of the status `failed` or `cancelled`.
    virtual std::optional<NSError> error() const = 0;
};

/// One opened media file. One thread at a time.
class MediaFile {
public:
    virtual ~MediaFile() = default;

    virtual CMTime duration() const = 0;
    virtual const std::vector<AVAssetTrack>& tracks() const = 0;
    virtual const std::vector<AVMetadataItem>& metadata() const = 0;
    /// The presets to which this file can be converted, in no particular order.
    virtual std::vector<std::string> exportPresets() const = 0;
    /// Whether the file has a video track of which frames can be decoded.
    virtual bool canGenerateImages() const = 0;
    /// The frame that is shown at `time`, as it is encoded (without the transform); null with a sentence in
    /// `error`, when given, if there is none.
    virtual std::shared_ptr<const CGImage> copyImage(CMTime time, std::optional<NSError>* error) = 0;
    /// Null when the preset is not among `exportPresets`.
    virtual std::shared_ptr<MediaExport> makeExport(const MediaExportRequest& request) = 0;
};

/// Reads and writes media files; a host installs one. Any thread.
class MediaBackend {
public:
    virtual ~MediaBackend() = default;

    /// Null with a sentence in `error`, when given, if the address leads to no media file.
    virtual std::shared_ptr<MediaFile> open(const NSURL& url, std::optional<NSError>* error) = 0;

    /// Null when no backend is installed.
    static std::shared_ptr<MediaBackend> installed();
    /// Null removes the backend. Files that it has opened keep working.
    static void install(std::shared_ptr<MediaBackend> backend);
};

}  // namespace ostrel
