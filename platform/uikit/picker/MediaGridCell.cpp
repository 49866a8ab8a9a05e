#include "platform/uikit/picker/MediaGridCell.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/values/NSURL.h"
#include "platform/foundation/values/Text.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr CGFloat badgeHeight = 18, badgeMargin = 5, badgePadding = 6;
constexpr CGFloat cellSymbolSize = 28;
constexpr UIColor restColor = UIColor::rgb(0xE6E8ED);
constexpr UIColor unusableColor = UIColor::rgb(0xF0F1F4);

std::shared_ptr<const UIImage> videoSymbol() {
    static const auto image = [] {
        Path path;
        path.moveTo(4.5, 5.5).lineTo(19.5, 5.5).lineTo(19.5, 18.5).lineTo(4.5, 18.5).close();
        path.moveTo(10.4, 9.2).lineTo(14.8, 12).lineTo(10.4, 14.8).close();
        return std::make_shared<const UIImage>(std::move(path), CGSize{24, 24});
    }();
    return image;
}

std::shared_ptr<const UIImage> pictureSymbol() {
    static const auto image = [] {
        Path path;
        path.moveTo(4.5, 5.5).lineTo(19.5, 5.5).lineTo(19.5, 18.5).lineTo(4.5, 18.5).close();
        path.moveTo(5, 17).lineTo(9.6, 11.6).lineTo(13, 15.4).lineTo(15.2, 13.2).lineTo(19, 17);
        path.ellipse(15, 9.2, 1.2, 1.2);
        return std::make_shared<const UIImage>(std::move(path), CGSize{24, 24});
    }();
    return image;
}

/// "0:07", "1:02:30".
std::string clockText(double seconds) {
    const auto whole = static_cast<std::int64_t>(std::llround(std::clamp(seconds, 0.0, 360'000.0)));
    const auto twoDigits = [](std::int64_t value) { return (value < 10 ? "0" : "") + decimalText(value); };
    const std::int64_t hours = whole / 3600, minutes = whole / 60 % 60;
    return hours > 0 ? decimalText(hours) + ":" + twoDigits(minutes) + ":" + twoDigits(whole % 60)
                     : decimalText(minutes) + ":" + twoDigits(whole % 60);
}

/// A file's name as it can be shown: names are bytes, and need not be UTF-8.
std::string shownName(const std::string& path) {
    std::string name = path.substr(path.rfind('/') + 1);
    for (std::size_t valid; (valid = validUtf8Prefix(name)) < name.size();) name[valid] = '?';
    return name;
}

}  // namespace

void MediaGridCell::initialise() {
    setClipsToBounds(true);
    picture_ = make<UIImageView>();
    picture_->setContentMode(UIViewContentMode::scaleAspectFill);
    symbol_ = make<UIImageView>();
    symbol_->setContentMode(UIViewContentMode::scaleAspectFit);
    shade_ = make<UIView>();
    shade_->setUserInteractionEnabled(false);
    badge_ = make<UIView>();
    badge_->setUserInteractionEnabled(false);
    badge_->setBackgroundColor(UIColor::black().withAlpha(0.55f));
    badge_->setCornerRadius(badgeHeight / 2);
    length_ = make<UILabel>();
    length_->setFont(UIFont::mediumSystem(11));
    length_->setTextColor(UIColor::white());
    length_->setTextAlignment(NSTextAlignment::center);
    badge_->addSubview(length_);
    wheel_ = make<UIActivityIndicatorView>();
    wheel_->setColor(UIColor::white());
    wheel_->setUserInteractionEnabled(false);
    for (const std::shared_ptr<UIView>& view :
         std::initializer_list<std::shared_ptr<UIView>>{symbol_, picture_, badge_, shade_, wheel_}) {
        contentView()->addSubview(view);
    }
    setCursor(CursorShape::pointingHand);
}

void MediaGridCell::show(const MediaLibraryItem& item, std::size_t position, std::size_t count,
                         const std::shared_ptr<MediaThumbnails>& thumbnails) {
    const bool isSame = item == item_ && picture_->image();
    item_ = item;
    position_ = position;
    count_ = count;
    thumbnails_ = thumbnails;
    setPressed(false);
    const MediaThumbnail* const kept = thumbnails->find(item.path);
    // The cell keeps the old picture until the new one arrives.
    if (kept || !isSame) setThumbnail(kept);
    if (kept) return;
    const auto weak = std::weak_ptr(std::static_pointer_cast<MediaGridCell>(shared_from_this()));
    thumbnails->request(item, [weak, path = item.path](const MediaThumbnail& thumbnail) {
        const auto self = weak.lock();
        if (self && self->path() == path) self->setThumbnail(&thumbnail);
    });
}

void MediaGridCell::didMoveToSuperview() {
    UICollectionViewCell::didMoveToSuperview();
    if (superview()) return;
    if (const auto thumbnails = thumbnails_.lock()) thumbnails->forget(item_.path);
}

void MediaGridCell::touchesBegan(const UITouch& touch) {
    setPressed(touch.button == UIButtonMask::primary);
    UICollectionViewCell::touchesBegan(touch);
}

void MediaGridCell::touchesEnded(const UITouch& touch) {
    setPressed(false);
    UICollectionViewCell::touchesEnded(touch);
}

void MediaGridCell::touchesCancelled(const UITouch& touch) {
    setPressed(false);
    UICollectionViewCell::touchesCancelled(touch);
}

void MediaGridCell::setPressed(bool isPressed) {
    isPressed_ = isPressed;
    updateShade();
}

void MediaGridCell::setThumbnail(const MediaThumbnail* thumbnail) {
    isUsable_ = !thumbnail || thumbnail->image;
    duration_ = thumbnail ? thumbnail->duration : 0;
    picture_->setImage(thumbnail ? thumbnail->image : nullptr);
    symbol_->setHidden(thumbnail && thumbnail->image);
    symbol_->setImage(!isUsable_                      ? UIImage::systemImageNamed("exclamationmark.circle")
                      : item_.kind == MediaKind::clip ? videoSymbol()
                                                      : pictureSymbol());
    symbol_->setTintColor(UIColor::tertiaryLabel());
    setBackgroundColor(isUsable_ ? restColor : unusableColor);
    badge_->setHidden(duration_ <= 0);
    length_->setText(duration_ > 0 ? clockText(duration_) : "");
    describe();
    setNeedsLayout();
}

void MediaGridCell::describe() {
    std::string text = platformText(item_.kind == MediaKind::clip ? "Video %1 of %2" : "Photo %1 of %2");
    text = replacingOccurrences(text, "%1", decimalText(static_cast<std::int64_t>(position_)));
    text = replacingOccurrences(text, "%2", decimalText(static_cast<std::int64_t>(count_)));
    text += ", " + shownName(item_.path);
    if (duration_ > 0) text += ", " + clockText(duration_);
    if (!isUsable_) text += ", " + platformText("Cannot be used");
    setAccessibility(AccessibilityRole::button, text);
}

void MediaGridCell::setBusy(bool isBusy) {
    isBusy_ = isBusy;
    if (isBusy) {
        wheel_->startAnimating();
    } else {
        wheel_->stopAnimating();
    }
    updateShade();
}

void MediaGridCell::updateShade() {
    shade_->setBackgroundColor(isBusy_      ? UIColor::black().withAlpha(0.45f)
                               : isPressed_ ? UIColor::black().withAlpha(0.25f)
                                            : UIColor::clear());
}

void MediaGridCell::layoutSubviews() {
    UICollectionViewCell::layoutSubviews();
    const CGSize size = bounds().size;
    picture_->setFrame({{}, size});
    shade_->setFrame({{}, size});
    symbol_->setFrame(
        {(size.width - cellSymbolSize) / 2, (size.height - cellSymbolSize) / 2, cellSymbolSize, cellSymbolSize});
    wheel_->setFrame({(size.width - 20) / 2, (size.height - 20) / 2, 20, 20});
    const CGFloat width = std::ceil(length_->sizeThatFits({size.width, badgeHeight}).width) + 2 * badgePadding;
    badge_->setFrame({size.width - badgeMargin - width, size.height - badgeMargin - badgeHeight, width, badgeHeight});
    length_->setFrame({{}, badge_->frame().size});
}

}  // namespace ostrel
