#include "article/detail/UIArticleVideoTableViewCell.h"

#include "article/detail/DetailMetrics.h"
#include "article/detail/VideoFile.h"
#include "article/editor/VideoCollectionViewCell.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/OstrelRequestManager.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/uikit/view/UIDevice.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat roomBelow = 12.5;
constexpr CGFloat pictureRadius = 6, symbolRadius = 4;
constexpr float portraitHeight = 300;
/// 0.2 in single precision, seconds.
constexpr double playingInterval = 0.2f;
constexpr std::string_view localServer = "http://192";

std::string playingTime(CMTime now, CMTime total) {
    // While the length is not known, neither is where it stands.
    const bool isKnown = total.isKnown();
    return VideoCollectionViewCell::durationString(isKnown ? static_cast<float>(now.wholeSeconds()) : 0) +
           "/" +
           VideoCollectionViewCell::durationString(isKnown ? static_cast<float>(total.wholeSeconds()) : 0);
}

}  // namespace

UIArticleVideoTableViewCell::UIArticleVideoTableViewCell(UITableViewCellStyle style,
                                                         std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

UIArticleVideoTableViewCell::~UIArticleVideoTableViewCell() {
    if (playingTimer_) playingTimer_->invalidate();
}

std::weak_ptr<UIArticleVideoTableViewCell> UIArticleVideoTableViewCell::weakSelf() {
    return std::static_pointer_cast<UIArticleVideoTableViewCell>(shared_from_this());
}

// Building

void UIArticleVideoTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    setBackgroundColor(UIColor::white());
    space_ = detailSpace;
    const CGFloat space = space_;

    baseView_ = make<UIView>(CGRect(space, space, frame().width() - 2 * space, frame().height() - 2 * space));
    baseView_->setBackgroundColor(UIColor::clear());
    baseView_->setAutoresizingMask(autoresizingNone);
    baseView_->setClipsToBounds(true);
    baseView_->setCornerRadius(pictureRadius);
    addSubview(baseView_);

    makeThumbnail();
    makeCaption();
    addConstraint({.toItem = baseView_, .constant = 2 * space + roomBelow});
}

void UIArticleVideoTableViewCell::makeThumbnail() {
    const CGRect whole = {{0, 0}, baseView_->frame().size};
    maskImageView_ = make<UIImageView>(whole);
    maskImageView_->setClipsToBounds(true);
    maskImageView_->setCornerRadius(pictureRadius);
    auto blur = make<UIVisualEffectView>(whole, UIBlurEffectStyle::light);
    blur->setAutoresizingMask(flexibleWidth | flexibleHeight);
    maskImageView_->addSubview(blur);
    // The same picture once more, and nothing to be told about.
    maskImageView_->setAccessibility(AccessibilityRole::none, {});
    baseView_->addSubview(maskImageView_);

    thumbnailImageView_ = make<UIImageView>(whole);
    thumbnailImageView_->setBackgroundColor(UIColor::clear());
    thumbnailImageView_->setUserInteractionEnabled(true);
    thumbnailImageView_->setContentMode(UIViewContentMode::scaleAspectFit);
    thumbnailImageView_->setAutoresizingMask(autoresizingNone);
    thumbnailImageView_->setClipsToBounds(true);
    thumbnailImageView_->setCornerRadius(pictureRadius);
    baseView_->addSubview(thumbnailImageView_);

    const CGSize size = whole.size;
    durationLabel_ = make<UILabel>(CGRect(10, size.height - 30, size.width - 30, 24));
    durationLabel_->setAutoresizingMask(flexibleLeftMargin | flexibleTopMargin);
    durationLabel_->setBackgroundColor(UIColor::clear());
    durationLabel_->setTextColor(UIColor::white());
    durationLabel_->setTextAlignment(NSTextAlignment::right);
    durationLabel_->setFont(UIFont::fontWithName("Courier-Bold", 20));
    durationLabel_->setClipsToBounds(true);
    durationLabel_->setCornerRadius(symbolRadius);
    thumbnailImageView_->addSubview(durationLabel_);

    actView_ = make<UIActivityIndicatorView>(UIActivityIndicatorView::Style::large);
    actView_->setBackgroundColor({0.76f, 0.72f, 0.74f, 0.4f});
    actView_->setFrame({0, 0, 120, 120});
    actView_->setClipsToBounds(true);
    actView_->setCornerRadius(symbolRadius);
    thumbnailImageView_->addSubview(actView_);

    const auto symbol = imageInBundle(OstrelArticleBundle, "video_play_image");
    stateImageView_ = make<UIImageView>(CGRect{{0, 0}, symbol ? symbol->size() : CGSize{}});
    stateImageView_->setImage(symbol);
    stateImageView_->setClipsToBounds(true);
    stateImageView_->setCornerRadius(symbolRadius);
    stateImageView_->setAccessibility(AccessibilityRole::none, {});
    thumbnailImageView_->addSubview(stateImageView_);
}

void UIArticleVideoTableViewCell::makeCaption() {
    myTextView_ = make<UITextView>(CGRect(0, 0, frame().width() - 2 * space_, 0));
    myTextView_->setFont(UIFont::fontWithName("PingFangSC-Light", 12));
    myTextView_->setAutoresizingMask(autoresizingNone);
    myTextView_->setTextAlignment(NSTextAlignment::center);
    myTextView_->setTextContainerInset({});
    myTextView_->setSelectable(false);
    myTextView_->setEditable(false);
    myTextView_->setScrollEnabled(false);
    myTextView_->setBackgroundColor(UIColor::clear());
    baseView_->addSubview(myTextView_);
}

// Showing a record

void UIArticleVideoTableViewCell::setVideoDictionary(Dictionary record) {
    // A row that is laid out anew keeps what it is about to play; one that gets another video does not.
    if (recordText(record, "video") != recordText(videoDictionary_, "video")) forgetDownload();
    videoDictionary_ = std::move(record);
    videoWidth_ = recordFloat(videoDictionary_, "video_width");
    videoHeight_ = recordFloat(videoDictionary_, "video_height");
    const std::string caption = recordText(videoDictionary_, "text");
    myTextView_->setText(caption);
    myTextView_->setAlpha(caption.empty() ? 0 : 1);
    durationLabel_->setText(
        VideoCollectionViewCell::durationString(recordFloat(videoDictionary_, "duration")));
    setAccessibility(AccessibilityRole::listItem,
                     caption.empty() ? durationLabel_->text() : caption + ", " + durationLabel_->text());
    thumbnailImageView_->setAccessibility(AccessibilityRole::image, caption);
    refreshHeight();
    loadThumbnail();
}

void UIArticleVideoTableViewCell::refreshHeight() {
    const CGFloat windowWidth = firstWindowWidth();
    ratio_ = videoWidth_ > 0 ? videoHeight_ / videoWidth_ : 1.0f;
    currentHeight_ = std::max(0.0f, static_cast<float>(static_cast<CGFloat>(ratio_) * (windowWidth - 10.0)));
    if (isPortrait() && currentHeight_ > portraitHeight) currentHeight_ = portraitHeight;
    const CGRect picture = {0, 0, windowWidth - 10.0, currentHeight_};
    thumbnailImageView_->setFrame(picture);
    maskImageView_->setFrame({{0, 0}, thumbnailImageView_->frame().size});
    const auto captionWidth = static_cast<float>(windowWidth - 2 * space_);
    const CGFloat captionHeight =
        textHeight(myTextView_->text(), myTextView_->font(), std::max(0.0f, captionWidth));
    myTextView_->setFrame({0, thumbnailImageView_->frame().maxY(), captionWidth, captionHeight});
    baseView_->setFrame({baseView_->frame().origin, {captionWidth, captionHeight + currentHeight_}});
}

void UIArticleVideoTableViewCell::setFrame(const CGRect& frame) {
    UITableViewCell::setFrame(frame);
    if (!baseView_ || videoWidth_ == 0) return;
    refreshHeight();
    const CGSize size = thumbnailImageView_->frame().size;
    actView_->setCenter({size.width * 0.5, size.height * 0.5});
    stateImageView_->setCenter(actView_->center());
    if (playLayer_) playLayer_->setFrame({{0, 0}, size});
}

void UIArticleVideoTableViewCell::loadThumbnail() {
    const std::string address = recordText(videoDictionary_, "thumbnail");
    const auto show = [weak = weakSelf(), address](const Data& image) {
        if (!image) return;
        RunLoop::main().perform([weak, address, image] {
            const auto row = weak.lock();
            // The row may show another video by then.
            if (row && recordText(row->videoDictionary_, "thumbnail") == address)
                row->updateVideoThumbnailWith(image);
        });
    };
    show(OstrelRequestManager::defaultOstrelRequestManager().request(
        address, [show](const Data& image, bool loaded, const auto&) {
            if (loaded) show(image);
        }));
}

void UIArticleVideoTableViewCell::updateVideoThumbnailWith(const Data& image) {
    const bool isShown =
        shownThumbnail_ && shownThumbnail_.bytes() == image.bytes() && shownThumbnail_.size() == image.size();
    // The same bytes keep their picture, which is decoded already.
    if (!isShown) thumbnailImageView_->setImage(UIImage::imageWithData(image));
    shownThumbnail_ = image;
    if (isPortrait()) {
        maskImageView_->setAlpha(1);
        maskImageView_->setImage(thumbnailImageView_->image());
    } else {
        maskImageView_->setAlpha(0);
    }
}

// Playing

bool UIArticleVideoTableViewCell::isStreamsServer(const std::string& address) {
    if (UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::mac) return false;
    if (address.size() < localServer.size()) return true;
    const auto isSame = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
    return !std::equal(localServer.begin(), localServer.end(), address.begin(),
                       [&](char expected, char given) { return isSame(given, expected); });
}

void UIArticleVideoTableViewCell::playOrPause() {
    // A player that has failed plays nothing more; the next press tries with a new one.
    const bool isUsable = player_ && player_->status() != AVPlayerStatus::failed;
    if (isUsable && player_->timeControlStatus() == AVPlayerTimeControlStatus::playing) return pause();
    if (isUsable && player_->timeControlStatus() == AVPlayerTimeControlStatus::paused) {
        const CMTime duration = player_->currentItem()->duration();
        // Only the values are compared, whatever their time scales.
        if (duration.value == player_->currentTime().value)
            player_->seekToTime(CMTimeMake(0, duration.timescale));
        return playContinue();
    }
    const std::string address = recordText(videoDictionary_, "video");
    if (isStreamsServer(address)) {
        playWithURL(address);
    } else {
        download(address);
    }
}

void UIArticleVideoTableViewCell::download(const std::string& address) {
    const auto request = ++requestCount_;
    awaited_ = request;
    const Data present = OstrelRequestManager::defaultOstrelRequestManager().request(
        address, [weak = weakSelf(), request](const Data& video, bool loaded, const auto&) {
            const auto row = weak.lock();
            if (!row || row->awaited_ != request || !loaded || !video) return;
            row->actView_->stopAnimating();
            row->playDownloaded(video);
        });
    if (present) return playDownloaded(present);
    const CGSize size = thumbnailImageView_->frame().size;
    actView_->setCenter({size.width * 0.5, size.height * 0.5});
    actView_->startAnimating();
}

void UIArticleVideoTableViewCell::playDownloaded(const Data& video) {
    // A new number, so that the answer that follows cached data does not start it once more.
    const auto request = ++requestCount_;
    awaited_ = request;
    const auto weak = weakSelf();
    writeCurrentVideoFile(
        video,
        [weak, request] {
            const auto row = weak.lock();
            return row && row->awaited_ == request;
        },
        [weak](const std::string& path) {
            const auto row = weak.lock();
            if (!row) return;
            row->awaited_.reset();
            row->playWithURL(path);
        });
}

void UIArticleVideoTableViewCell::forgetDownload() {
    if (!awaited_) return;
    awaited_.reset();
    actView_->stopAnimating();
}

void UIArticleVideoTableViewCell::playWithURL(const std::string& path) {
    if (player_) {
        player_->pause();
        player_.reset();
    }
    if (playLayer_) {
        playLayer_->removeFromSuperview();
        playLayer_.reset();
    }
    const std::string url = playerURL(path);
    if (url.empty()) return NSLog("playURL init failed.");
    auto asset = std::make_shared<const AVURLAsset>(url);
    player_ = AVPlayer::playerWithPlayerItem(std::make_shared<AVPlayerItem>(std::move(asset)));
    if (!player_) return NSLog("player init failed.");
    playLayer_ = AVPlayerLayer::playerLayerWithPlayer(player_);
    playLayer_->setBackgroundColor(UIColor::clear());
    playLayer_->setFrame({{0, 0}, thumbnailImageView_->frame().size});
    thumbnailImageView_->addSubview(playLayer_);
    thumbnailImageView_->bringSubviewToFront(durationLabel_);
    thumbnailImageView_->bringSubviewToFront(actView_);
    thumbnailImageView_->bringSubviewToFront(stateImageView_);
    playContinue();
}

void UIArticleVideoTableViewCell::playContinue() {
    if (!player_) return;
    if (playingTimer_) playingTimer_->invalidate();
    playingTimer_ = NSTimer::scheduledTimer(playingInterval, true, [weak = weakSelf()](NSTimer& timer) {
        if (const auto row = weak.lock()) {
            row->showPlayingTime();
        } else {
            timer.invalidate();
        }
    });
    player_->play();
    stateImageView_->setAlpha(0);
    actView_->startAnimating();
}

void UIArticleVideoTableViewCell::showPlayingTime() {
    if (!player_) return;
    // One that has failed is not waited for: without its wheel the symbol offers to try again.
    const bool hasFailed = player_->status() == AVPlayerStatus::failed;
    if (hasFailed || player_->status() == AVPlayerStatus::readyToPlay) actView_->stopAnimating();
    // It has come to its end, or cannot be played: the symbol is there while nothing plays.
    if (hasFailed || player_->timeControlStatus() == AVPlayerTimeControlStatus::paused)
        stateImageView_->setAlpha(1);
    durationLabel_->setText(playingTime(player_->currentTime(), player_->currentItem()->duration()));
}

void UIArticleVideoTableViewCell::pause() {
    if (!player_) return;
    // The timer goes on, so that the label shows where it stands.
    player_->pause();
    stateImageView_->setAlpha(1);
}

void UIArticleVideoTableViewCell::stop() {
    // At most one video plays: one that is still on its way must not begin beside another, or when its screen has left.
    forgetDownload();
    pause();
}

}  // namespace ostrel
