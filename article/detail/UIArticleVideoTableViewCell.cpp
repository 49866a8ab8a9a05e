#include "article/detail/UIArticleVideoTableViewCell.h"

#include "article/detail/DetailMetrics.h"
#include "article/detail/VideoDownload.h"
#include "article/detail/VideoFile.h"
#include "article/detail/VideoRowLayout.h"
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

constexpr CGFloat symbolRadius = 4;
/// How often the time beside the video is brought up to date: 0.2 in single precision, seconds.
constexpr double playingInterval = 0.2f;
/// How the addresses of servers in the local network begin.
constexpr std::string_view localServer = "http://192";

std::string playingTime(CMTime now, CMTime total) {
    // A player that does not know the video's length yet does not know its position either: both are shown as
    // 0.
    const bool isKnown = total.isKnown();
    return VideoCollectionViewCell::durationString(isKnown ? static_cast<float>(now.wholeSeconds()) : 0) + "/" +
           VideoCollectionViewCell::durationString(isKnown ? static_cast<float>(total.wholeSeconds()) : 0);
}

}  // namespace

UIArticleVideoTableViewCell::UIArticleVideoTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier)
    : UITableViewCell(style, std::move(reuseIdentifier)) {}

UIArticleVideoTableViewCell::~UIArticleVideoTableViewCell() {
    if (playingTimer_) playingTimer_->invalidate();
}

std::weak_ptr<UIArticleVideoTableViewCell> UIArticleVideoTableViewCell::weakSelf() {
    return std::static_pointer_cast<UIArticleVideoTableViewCell>(shared_from_this());
}

// Construction

void UIArticleVideoTableViewCell::initialise() {
    UITableViewCell::initialise();
    setSelectionStyle(UITableViewCellSelectionStyle::none);
    setBackgroundColor(UIColor::white());
    const CGFloat space = detailSpace;
    download_ = std::make_shared<VideoDownload>(
        VideoDownload::Handlers{.arrived = [this] { actView_->stopAnimating(); },
                                .ready = [this](const std::string& path) { playWithURL(path); }});

    baseView_ = make<UIView>(CGRect(space, space, frame().width() - 2 * space, frame().height() - 2 * space));
    baseView_->setBackgroundColor(UIColor::clear());
    baseView_->setAutoresizingMask(autoresizingNone);
    baseView_->setClipsToBounds(true);
    baseView_->setCornerRadius(pictureRadius);
    addSubview(baseView_);

    makeThumbnail();
    makeCaption();
    addConstraint({.toItem = baseView_, .constant = VideoRowLayout::heightBesideBase});
}

void UIArticleVideoTableViewCell::makeThumbnail() {
    const CGRect whole = {{0, 0}, baseView_->frame().size};
    maskImageView_ = make<UIImageView>(whole);
    maskImageView_->setClipsToBounds(true);
    maskImageView_->setCornerRadius(pictureRadius);
    auto blur = make<UIVisualEffectView>(whole, UIBlurEffectStyle::light);
    blur->setAutoresizingMask(flexibleWidth | flexibleHeight);
    maskImageView_->addSubview(blur);
    // Hidden from assistive programs, for it shows the thumbnail's picture a second time.
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
    myTextView_ = make<UITextView>(CGRect(0, 0, frame().width() - 2 * detailSpace, 0));
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

// The record

void UIArticleVideoTableViewCell::setVideoDictionary(Dictionary record) {
    // A row that gets the same video again still plays it when the download ends; a row that gets another
    // video does not.
    if (recordText(record, "video") != recordText(videoDictionary_, "video")) forgetDownload();
    videoDictionary_ = std::move(record);
    videoWidth_ = recordFloat(videoDictionary_, "video_width");
    videoHeight_ = recordFloat(videoDictionary_, "video_height");
    const std::string caption = recordText(videoDictionary_, "text");
    myTextView_->setText(caption);
    myTextView_->setAlpha(caption.empty() ? 0 : 1);
    durationLabel_->setText(VideoCollectionViewCell::durationString(recordFloat(videoDictionary_, "duration")));
    setAccessibility(AccessibilityRole::listItem,
                     caption.empty() ? durationLabel_->text() : caption + ", " + durationLabel_->text());
    thumbnailImageView_->setAccessibility(AccessibilityRole::image, caption);
    refreshHeight();
    loadThumbnail();
}

void UIArticleVideoTableViewCell::refreshHeight() {
    const CGFloat windowWidth = firstWindowWidth();
    const CGFloat captionHeight =
        textHeight(myTextView_->text(), myTextView_->font(), std::max(0.0f, VideoRowLayout::captionWidth(windowWidth)));
    const auto layout = VideoRowLayout::make(
        windowWidth, {.videoWidth = videoWidth_, .videoHeight = videoHeight_, .captionHeight = captionHeight});
    ratio_ = layout.ratio;
    currentHeight_ = layout.thumbnailHeight;
    thumbnailImageView_->setFrame(layout.thumbnail);
    maskImageView_->setFrame(layout.thumbnail);
    myTextView_->setFrame(layout.caption);
    baseView_->setFrame(layout.base);
}

void UIArticleVideoTableViewCell::setFrame(const CGRect& frame) {
    UITableViewCell::setFrame(frame);
    if (!baseView_ || videoWidth_ == 0) return;
    refreshHeight();
    centreWheel();
    stateImageView_->setCenter(actView_->center());
    if (playLayer_) playLayer_->setFrame({{0, 0}, thumbnailImageView_->frame().size});
}

void UIArticleVideoTableViewCell::centreWheel() {
    const CGSize size = thumbnailImageView_->frame().size;
    actView_->setCenter({size.width * 0.5, size.height * 0.5});
}

void UIArticleVideoTableViewCell::loadThumbnail() {
    const std::string address = recordText(videoDictionary_, "thumbnail");
    const auto show = [weak = weakSelf(), address](const Data& image) {
        if (!image) return;
        RunLoop::main().perform([weak, address, image] {
            const auto row = weak.lock();
            // The row may show another video when the bytes come.
            if (row && recordText(row->videoDictionary_, "thumbnail") == address) row->updateVideoThumbnailWith(image);
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
    // The same bytes are not decoded a second time.
    if (!isShown) thumbnailImageView_->setImage(UIImage::imageWithData(image));
    shownThumbnail_ = image;
    if (VideoRowLayout::isPortrait(videoWidth_, videoHeight_)) {
        maskImageView_->setAlpha(1);
        maskImageView_->setImage(thumbnailImageView_->image());
    } else {
        maskImageView_->setAlpha(0);
    }
}

// Playback

bool UIArticleVideoTableViewCell::isStreamsServer(const std::string& address) {
    if (UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::mac) return false;
    if (address.size() < localServer.size()) return true;
    const auto isSame = [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; };
    return !std::equal(localServer.begin(), localServer.end(), address.begin(),
                       [&](char expected, char given) { return isSame(given, expected); });
}

void UIArticleVideoTableViewCell::playOrPause() {
    // A player that has failed plays nothing more: the next selection of the row makes a new player.
    const bool isUsable = player_ && player_->status() != AVPlayerStatus::failed;
    if (isUsable && player_->timeControlStatus() == AVPlayerTimeControlStatus::playing) return pause();
    if (isUsable && player_->timeControlStatus() == AVPlayerTimeControlStatus::paused) {
        const CMTime duration = player_->currentItem()->duration();
        // Only the values are compared: a player gives length and position in one time scale.
        if (duration.value == player_->currentTime().value) player_->seekToTime(CMTimeMake(0, duration.timescale));
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
    if (!download_->start(address)) return;
    centreWheel();
    actView_->startAnimating();
}

void UIArticleVideoTableViewCell::forgetDownload() {
    if (download_->forget()) actView_->stopAnimating();
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
    // Nobody waits for a player that has failed: the wheel stops, and the play symbol offers another attempt.
    const bool hasFailed = player_->status() == AVPlayerStatus::failed;
    if (hasFailed || player_->status() == AVPlayerStatus::readyToPlay) actView_->stopAnimating();
    // The play symbol is shown while nothing plays: also at the end of the video, and when it cannot be
    // played.
    if (hasFailed || player_->timeControlStatus() == AVPlayerTimeControlStatus::paused) stateImageView_->setAlpha(1);
    durationLabel_->setText(playingTime(player_->currentTime(), player_->currentItem()->duration()));
}

void UIArticleVideoTableViewCell::pause() {
    if (!player_) return;
    // The timer continues, so that the label shows the position at which the video is paused.
    player_->pause();
    stateImageView_->setAlpha(1);
}

void UIArticleVideoTableViewCell::stop() {
    // At most one video plays. A video that is still being downloaded must not begin beside another video,
    // nor after its screen has left.
    forgetDownload();
    pause();
}

}  // namespace ostrel
