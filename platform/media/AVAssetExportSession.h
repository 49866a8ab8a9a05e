#pragma once

#include "platform/media/AVAsset.h"

#include <string_view>

namespace ostrel {

inline constexpr std::string_view AVAssetExportPresetMediumQuality = "AVAssetExportPresetMediumQuality";
inline constexpr std::string_view AVAssetExportPresetLowQuality = "AVAssetExportPresetLowQuality";
inline constexpr std::string_view AVFileTypeMPEG4 = "public.mpeg-4";

/// Converts an asset with the settings of a preset, on a thread of its own, and appears in the list of work
/// in progress. One thread sets it up and starts it; any thread may call `cancelExport`, `status`, `progress`
/// and `error`.
class AVAssetExportSession final {
public:
    /// The presets to which the asset can be converted; empty without an asset.
    static std::vector<std::string> exportPresetsCompatibleWithAsset(const std::shared_ptr<const AVAsset>& asset);
    AVAssetExportSession(std::shared_ptr<const AVAsset> asset, std::string presetName);
    ~AVAssetExportSession();

    const std::string& presetName() const { return request_.presetName; }
    /// A file address. The file appears there only when it is complete, and replaces an existing file.
    void setOutputURL(const NSURL& url) { outputURL_ = url; }
    /// The only supported type is `AVFileTypeMPEG4`.
    void setOutputFileType(std::string_view type) { outputFileType_ = type; }
    void setShouldOptimizeForNetworkUse(bool optimizes) { request_.optimizesForNetworkUse = optimizes; }

    /// May be called once. `handler` runs exactly once, on the export's own thread, or on the calling thread
    /// when the export cannot begin.
    void exportAsynchronouslyWithCompletionHandler(std::function<void()> handler);
    /// Ends the export within 100 ms with the status `cancelled` and without a file. The handler still runs.
    void cancelExport();

    /// `unknown` before the start.
    AVAssetExportSessionStatus status() const;
    /// 0 to 1, never decreasing.
    float progress() const;
    /// The reason of a failure or a cancellation; absent otherwise.
    std::optional<NSError> error() const;

private:
    std::optional<NSError> prepare();
    std::shared_ptr<class NSProgress> publish() const;

    std::shared_ptr<const AVAsset> asset_;
    MediaExportRequest request_;
    NSURL outputURL_;
    std::string outputFileType_;
    bool isStarted_ = false;
    /// Set before the export starts, unchanged afterwards.
    std::shared_ptr<MediaExport> export_;
    std::optional<NSError> refusal_;
};

}  // namespace ostrel
