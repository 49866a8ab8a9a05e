#pragma once

#include "platform/media/AVAsset.h"

#include <string_view>

namespace ostrel {

inline constexpr std::string_view AVAssetExportPresetMediumQuality = "AVAssetExportPresetMediumQuality";
inline constexpr std::string_view AVAssetExportPresetLowQuality = "AVAssetExportPresetLowQuality";
inline constexpr std::string_view AVFileTypeMPEG4 = "public.mpeg-4";

/// Writes an asset again with the settings of a preset, on a thread of its own, in the list of work in progress. Set up and started by one thread;
/// `cancelExport`, `status`, `progress` and `error` are for any.
class AVAssetExportSession final {
public:
    /// The presets that can be made from the asset; empty without one.
    static std::vector<std::string> exportPresetsCompatibleWithAsset(
        const std::shared_ptr<const AVAsset>& asset);
    AVAssetExportSession(std::shared_ptr<const AVAsset> asset, std::string presetName);
    ~AVAssetExportSession();

    const std::string& presetName() const { return request_.presetName; }
    /// A file address. The file appears there when it is complete, in place of what was there.
    void setOutputURL(const NSURL& url) { outputURL_ = url; }
    /// `AVFileTypeMPEG4` is the one that there is.
    void setOutputFileType(std::string_view type) { outputFileType_ = type; }
    void setShouldOptimizeForNetworkUse(bool optimizes) { request_.optimizesForNetworkUse = optimizes; }

    /// Once. `handler` runs once, on the export's own thread; on the calling one when the export cannot even begin.
    void exportAsynchronouslyWithCompletionHandler(std::function<void()> handler);
    /// Ends the export within 100 ms with the status `cancelled`, leaving no file. The handler still runs.
    void cancelExport();

    /// `unknown` before it is started.
    AVAssetExportSessionStatus status() const;
    /// 0 to 1, never going back.
    float progress() const;
    /// Why it failed or was cancelled; absent otherwise.
    std::optional<NSError> error() const;

private:
    std::optional<NSError> prepare();
    std::shared_ptr<class NSProgress> publish() const;

    std::shared_ptr<const AVAsset> asset_;
    MediaExportRequest request_;
    NSURL outputURL_;
    std::string outputFileType_;
    bool isStarted_ = false;
    /// Set before the export starts, not changed afterwards.
    std::shared_ptr<MediaExport> export_;
    std::optional<NSError> refusal_;
};

}  // namespace ostrel
