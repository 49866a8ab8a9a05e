#include "article/editor/UIArticleEditVideosTableViewCell.h"

#include "article/media/CaptureMetadata.h"
#include "article/media/NSMov2Mp4.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/RunLoop.h"

#include <utility>

namespace ostrel {

namespace {

constexpr char itemIdentifier[] = "cell", addIdentifier[] = "add";
constexpr char documents[] = "/Documents/";

}  // namespace

void UIArticleEditVideosTableViewCell::initialise() {
    UIArticleEditMediaTableViewCell::initialise();
    collectionView()->registerClassForCellWithReuseIdentifier<VideoCollectionViewCell>(itemIdentifier);
    collectionView()->registerClassForCellWithReuseIdentifier<AddVideoCollectionViewCell>(addIdentifier);
}

CGFloat UIArticleEditVideosTableViewCell::heightFor(const std::optional<ArticleVideos>& items,
                                                    std::int64_t style) {
    return heightForCount(items ? items->size() : 0, style);
}

void UIArticleEditVideosTableViewCell::setDelegate(
    std::shared_ptr<UIArticleEditVideosTableViewCellDelegate> delegate) {
    delegate_ = std::move(delegate);
}

void UIArticleEditVideosTableViewCell::tellTextAndValueChanged() {
    if (const auto delegate = delegate_)
        delegate->textAndValueChangedFromArticleEditVideosTableViewCell(*this);
}

void UIArticleEditVideosTableViewCell::tellNumberChanged() {
    if (const auto delegate = delegate_) delegate->videoNumberChanged(*this);
}

// Tiles

std::optional<std::size_t> UIArticleEditVideosTableViewCell::itemCount() const {
    return videosArray_ ? std::optional(videosArray_->size()) : std::nullopt;
}

std::shared_ptr<UICollectionViewCell> UIArticleEditVideosTableViewCell::addImageCellWithIndexPath(
    NSIndexPath path) {
    auto tile = std::static_pointer_cast<AddVideoCollectionViewCell>(
        collectionView()->dequeueReusableCellWithReuseIdentifierForIndexPath(addIdentifier, path));
    tile->setDelegate(weakSelf<UIArticleEditVideosTableViewCell>().lock());
    return tile;
}

std::shared_ptr<MediaCollectionViewCell> UIArticleEditVideosTableViewCell::itemTile(NSIndexPath path) {
    auto tile = std::static_pointer_cast<VideoCollectionViewCell>(
        collectionView()->dequeueReusableCellWithReuseIdentifierForIndexPath(itemIdentifier, path));
    tile->setDelegate(weakSelf<UIArticleEditVideosTableViewCell>().lock());
    return tile;
}

void UIArticleEditVideosTableViewCell::showItem(MediaCollectionViewCell& tile, std::size_t index) {
    static_cast<VideoCollectionViewCell&>(tile).setVideoObject((*videosArray_)[index]);
}

void UIArticleEditVideosTableViewCell::releaseTile(UICollectionViewCell& tile) {
    if (auto* const item = dynamic_cast<VideoCollectionViewCell*>(&tile)) item->setDelegate(nullptr);
    if (auto* const add = dynamic_cast<AddVideoCollectionViewCell*>(&tile)) add->setDelegate(nullptr);
}

void UIArticleEditVideosTableViewCell::swapItems(std::size_t one, std::size_t other) {
    std::swap((*videosArray_)[one], (*videosArray_)[other]);
}

void UIArticleEditVideosTableViewCell::eraseItem(std::size_t index) {
    videosArray_->erase(videosArray_->begin() + static_cast<std::ptrdiff_t>(index));
}

void UIArticleEditVideosTableViewCell::willRemoveItemOf(MediaCollectionViewCell& tile) {
    const auto& item = static_cast<VideoCollectionViewCell&>(tile).videoObject();
    if (!item || !item->videoDictionary()) return;
    if (!removedVideosDictionaryArray_) removedVideosDictionaryArray_.emplace();
    removedVideosDictionaryArray_->push_back(item->videoDictionary());
}

void UIArticleEditVideosTableViewCell::removeImageCollectionViewCell(VideoCollectionViewCell& tile) {
    removeItemOf(tile);
}

void UIArticleEditVideosTableViewCell::textChangedCollectionViewCell(VideoCollectionViewCell&) {
    tellTextAndValueChanged();
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
    // Under the name that was picked, its extension too, although it becomes an MP4 file.
    const std::string file = NSHomeDirectory() + documents + source.lastPathComponent();
    auto item = std::make_shared<NSArticleVideoObject>();
    item->setVideoFile(file);
    if (const auto clip = AVAsset::assetWithURL(source)) copyCaptureMetadata(*clip, *item);

    const auto weak = weakSelf<UIArticleEditVideosTableViewCell>();
    const auto weakPicker = picker.weak_from_this();
    conversions_[item] = nullptr;
    conversions_[item] = NSMov2Mp4().startConversion(
        source, file, [weak, weakPicker, item](bool finished, float, const std::optional<NSError>&) {
            // Its end is told by the export's thread; what became of it does not matter here.
            if (!finished || !RunLoop::hasMain()) return;
            RunLoop::main().perform([weak, weakPicker, item] {
                if (const auto row = weak.lock()) row->conversionDidEnd(item);
                if (const auto open = weakPicker.lock()) open->dismissViewControllerAnimated(true);
            });
        });
}

void UIArticleEditVideosTableViewCell::conversionDidEnd(const std::shared_ptr<NSArticleVideoObject>& item) {
    // A strip that has been closed meanwhile adds nothing.
    if (conversions_.erase(item) > 0) addVideoItemWith(item);
}

void UIArticleEditVideosTableViewCell::addVideoItemWith(const std::shared_ptr<NSArticleVideoObject>& item) {
    std::shared_ptr<const UIImage> picture;
    float duration = 0;
    NSMov2Mp4().mp4Information(NSURL::fileURLWithPath(item->videoFile().value_or("")), picture, duration);
    item->setThumbnail(picture);
    item->setDuration(duration);
    item->setVideoSize(picture ? picture->size() : CGSize());
    if (!videosArray_) videosArray_.emplace();
    videosArray_->push_back(item);
    insertLastTile();
    collectionView()->performBatchUpdates([] {},
                                          [weak = weakSelf<UIArticleEditVideosTableViewCell>()](bool) {
                                              if (const auto row = weak.lock()) row->numberDidChange();
                                          });
}

UIArticleEditVideosTableViewCell::~UIArticleEditVideosTableViewCell() { cancelConversions(); }

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
