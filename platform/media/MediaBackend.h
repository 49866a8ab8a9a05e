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
    /// Pixels as they are encoded, before the transform; zero for what is no video.
    CGSize naturalSize;
    /// From encoded pixels to the picture as it is to be seen, x to the right and y downwards.
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

/// What is to be written where.
struct MediaExportRequest {
    std::string presetName;
    /// The file appears here only when it is complete, and replaces what was there only then.
    std::string outputPath;
    /// The index stands before the media data, so that a player can start while the file arrives.
    bool optimizesForNetworkUse = false;
};

/// One export under way. It keeps itself alive until its completion has run. Any thread.
class MediaExport {
public:
    virtual ~MediaExport() = default;

    /// Once. `completion` runs once, on the export's own thread, when the status is final.
    virtual void start(std::function<void()> completion) = 0;
    /// The export ends soon with the status `cancelled`, and leaves no file; no operation when it has ended.
    virtual void cancel() = 0;
    virtual AVAssetExportSessionStatus status() const = 0;
    /// 0 to 1, never going back.
    virtual float progress() const = 0;
    /// Why the status is `failed` or `cancelled`.
    virtual std::optional<NSError> error() const = 0;
};

/// One opened media file. Calls are made by one thread at a time.
class MediaFile {
public:
    virtual ~MediaFile() = default;

    virtual CMTime duration() const = 0;
    virtual const std::vector<AVAssetTrack>& tracks() const = 0;
    virtual const std::vector<AVMetadataItem>& metadata() const = 0;
    /// The presets that can be made from this file, in no particular order; empty when none can.
    virtual std::vector<std::string> exportPresets() const = 0;
    /// False when no pictures can be asked for at all.
    virtual bool canGenerateImages() const = 0;
    /// The frame shown at `time`, as it is encoded (no transform applied); null with a sentence in `error`, when given,
    /// if there is none.
    virtual std::shared_ptr<const CGImage> copyImage(CMTime time, std::optional<NSError>* error) = 0;
    /// Null when the preset is not among `exportPresets`.
    virtual std::shared_ptr<MediaExport> makeExport(const MediaExportRequest& request) = 0;
};

/// What reads and writes media files; a host installs one. Any thread.
class MediaBackend {
public:
    virtual ~MediaBackend() = default;

    /// Null with a sentence in `error`, when given, if the address leads to no media file.
    virtual std::shared_ptr<MediaFile> open(const NSURL& url, std::optional<NSError>* error) = 0;

    /// Null when none is installed.
    static std::shared_ptr<MediaBackend> installed();
    /// Null takes it out. Files that are open keep working.
    static void install(std::shared_ptr<MediaBackend> backend);
};

}  // namespace ostrel
