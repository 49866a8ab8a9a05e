#include "platform/media/AVAssetExportSession.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/runloop/NSProgress.h"
#include "platform/foundation/values/Text.h"

#include <cassert>
#include <utility>

namespace ostrel {

std::vector<std::string> AVAssetExportSession::exportPresetsCompatibleWithAsset(
    const std::shared_ptr<const AVAsset>& asset) {
    return asset ? asset->file()->exportPresets() : std::vector<std::string>();
}

AVAssetExportSession::AVAssetExportSession(std::shared_ptr<const AVAsset> asset, std::string presetName)
    : asset_(std::move(asset)), request_{.presetName = std::move(presetName)} {
    assert(asset_);
}

AVAssetExportSession::~AVAssetExportSession() = default;

std::optional<NSError> AVAssetExportSession::prepare() {
    if (outputFileType_ != AVFileTypeMPEG4) return NSError{"Only MPEG-4 files are written."};
    if (!outputURL_.isFileURL()) return NSError{"The destination is no file address."};
    request_.outputPath = outputURL_.path();
    if (request_.outputPath.empty()) return NSError{"The destination has no path."};
    export_ = asset_->file()->makeExport(request_);
    if (!export_) return NSError{"The preset does not suit the clip."};
    return std::nullopt;
}

void AVAssetExportSession::exportAsynchronouslyWithCompletionHandler(std::function<void()> handler) {
    assert(!isStarted_);
    isStarted_ = true;
    refusal_ = prepare();
    if (refusal_) {
        if (handler) handler();
        return;
    }
    const auto work = publish();
    export_->start([work, handler = std::move(handler)] {
        work->unpublish();
        if (handler) handler();
    });
}

/// The work in progress that users see. It reads the export's progress and does not own the export.
std::shared_ptr<NSProgress> AVAssetExportSession::publish() const {
    auto work = NSProgress::progressWithTotalUnitCount(0);
    work->setLocalizedDescription(
        replacingOccurrences(platformText("Converting \"%@\""), "%@", asset_->URL().lastPathComponent()));
    const auto weak = std::weak_ptr(export_);
    work->setFractionSource([weak] {
        const auto running = weak.lock();
        return running ? double{running->progress()} : 1.0;
    });
    work->setCancellationHandler([weak] {
        if (const auto running = weak.lock()) running->cancel();
    });
    work->publish();
    return work;
}

void AVAssetExportSession::cancelExport() {
    if (export_) export_->cancel();
}

AVAssetExportSessionStatus AVAssetExportSession::status() const {
    if (refusal_) return AVAssetExportSessionStatus::failed;
    return export_ ? export_->status() : AVAssetExportSessionStatus::unknown;
}

float AVAssetExportSession::progress() const { return export_ ? export_->progress() : 0; }

std::optional<NSError> AVAssetExportSession::error() const {
    if (refusal_) return refusal_;
    return export_ ? export_->error() : std::nullopt;
}

}  // namespace ostrel
