#include "article/editor/UIArticleEditVideosTableViewCell.h"

#include "article/media/CaptureMetadata.h"
#include "article/media/NSMov2Mp4.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/RunLoop.h"

#include <utility>

namespace ostrel {

namespace {

constexpr char documents[] = "/Documents/";

}  // namespace

UIArticleEditVideosTableViewCell::~UIArticleEditVideosTableViewCell() { cancelConversions(); }

void UIArticleEditVideosTableViewCell::show(const std::shared_ptr<NSArticleVideoObject>& item,
                                            VideoCollectionViewCell& tile) {
    tile.setVideoObject(item);
}

void UIArticleEditVideosTableViewCell::tellTextAndValueChanged() {
    const auto receiver = delegate();
    if (receiver) receiver->textAndValueChangedFromArticleEditVideosTableViewCell(*this);
}

void UIArticleEditVideosTableViewCell::tellNumberChanged() {
    const auto receiver = delegate();
    if (receiver) receiver->videoNumberChanged(*this);
}

// Picking

void UIArticleEditVideosTableViewCell::addVideoFromAddVideoCollectionViewCell(AddVideoCollectionViewCell&) {
    selectVideo();
}

void UIArticleEditVideosTableViewCell::selectVideo() { select(UTTypeMovie); }

void UIArticleEditVideosTableViewCell::imagePickerControllerDidFinishPickingMediaWithInfo(
    UIImagePickerController& picker, const UIImagePickerMediaInfo& info) {
    if (info.mediaType != UTTypeMovie || !info.mediaURL) return;
    const NSURL& source = *info.mediaURL;
    // Kept on purpose: the converted file has the name and the extension of the picked clip, although it is an MP4
    // file.
    const std::string file = NSHomeDirectory() + documents + source.lastPathComponent();
    auto item = std::make_shared<NSArticleVideoObject>();
    item->setVideoFile(file);
    if (const auto clip = AVAsset::assetWithURL(source)) copyCaptureMetadata(*clip, *item);

    const auto weak = weakStrip();
    const auto weakPicker = picker.weak_from_this();
    conversions_[item] = nullptr;
    conversions_[item] = NSMov2Mp4().startConversion(
        source, file, [weak, weakPicker, item](bool finished, float, const std::optional<NSError>&) {
            // The last call comes on the export's thread. The item is added even when the export failed.
            if (!finished || !RunLoop::hasMain()) return;
            RunLoop::main().perform([weak, weakPicker, item] {
                if (const auto strip = weak.lock()) strip->conversionDidEnd(item);
                if (const auto open = weakPicker.lock()) open->dismissViewControllerAnimated(true);
            });
        });
}

void UIArticleEditVideosTableViewCell::conversionDidEnd(const std::shared_ptr<NSArticleVideoObject>& item) {
    // A strip that was closed during the conversion has forgotten the item and adds nothing.
    if (conversions_.erase(item) > 0) addVideoItemWith(item);
}

void UIArticleEditVideosTableViewCell::addVideoItemWith(const std::shared_ptr<NSArticleVideoObject>& item) {
    std::shared_ptr<const UIImage> picture;
    float duration = 0;
    NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(item->videoFile().value_or("")), picture, duration);
    item->setThumbnail(picture);
    item->setDuration(duration);
    item->setVideoSize(picture ? picture->size() : CGSize());
    append(item);
    collectionView()->performBatchUpdates([] {},
                                          [weak = weakStrip()](bool) {
                                              if (const auto strip = weak.lock()) strip->numberDidChange();
                                          });
}

void UIArticleEditVideosTableViewCell::close() {
    cancelConversions();
    UIArticleEditMediaTableViewCell::close();
}

void UIArticleEditVideosTableViewCell::cancelConversions() {
    for (const auto& [item, session] : std::exchange(conversions_, {})) {
        if (session) session->cancelExport();
    }
}

}  // namespace ostrel
