#include "article/editor/MediaCollectionViewCell.h"

#include "article/editor/MediaLayout.h"
#include "article/records/ArticleNotifications.h"
#include "article/resources/ArticleBundles.h"
#include "article/server/OstrelRequestManager.h"
#include "platform/foundation/values/Text.h"

#include <algorithm>
#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat pictureSide = 167;
constexpr CGFloat tilePictureRadius = 5;
constexpr CGFloat removeSide = 30;
constexpr char shakeKey[] = "shake";
/// UTF-16 units of a caption that are part of the tile's name for screen readers; the caption's editor has the whole
/// text.
constexpr std::size_t spokenCaptionLength = 200;

}  // namespace

void MediaCollectionViewCell::initialise() {
    myBundle_ = openFrameworkArticleBundle();
    ostrelArticleBundle_ = openApplicationArticleBundle();
    contentView()->setBackgroundColor(UIColor::clear());
    setClipsToBounds(true);

    img_ = make<UIImageView>(CGRect(0, 0, pictureSide, pictureSide));
    img_->setContentMode(UIViewContentMode::scaleAspectFill);
    img_->setClipsToBounds(true);
    img_->setCornerRadius(tilePictureRadius);
    img_->setBackgroundColor({0.96f, 0.96f, 0.97f, 1});
    img_->setImage(imageInBundle(ostrelArticleBundle_, "loading"));
    contentView()->addSubview(img_);

    actView_ = make<UIActivityIndicatorView>(UIActivityIndicatorView::Style::medium);
    actView_->setCenter(img_->center());
    img_->addSubview(actView_);
    actView_->startAnimating();

    myTextView_ = make<UITextView>();
    myTextView_->setTextViewDelegate(std::static_pointer_cast<MediaCollectionViewCell>(shared_from_this()));
    myTextView_->setFont(UIFont::fontWithName("PingFangSC-Regular", 14));
    myTextView_->setAccessibility(AccessibilityRole::textField, articleText("Caption"));

    myTextPlaceholder_ = make<UITextField>(CGRect(0, 9, std::max(0.0, myTextView_->frame().width() - 1), 16));
    myTextPlaceholder_->setAutoresizingMask(flexibleWidth);
    myTextPlaceholder_->setFont(myTextView_->font());
    myTextPlaceholder_->setPlaceholder(articleText("Say something ... "));
    myTextPlaceholder_->setUserInteractionEnabled(false);
    myTextView_->addSubview(myTextPlaceholder_);
    contentView()->addSubview(myTextView_);

    removeButton_ =
        make<UIButton>(UIButton::Type::custom, CGRect(frame().width() - removeSide, 0, removeSide, removeSide));
    removeButton_->setAutoresizingMask(flexibleLeftMargin | flexibleBottomMargin);
    removeButton_->setBackgroundColor(UIColor::clear());
    // The picture fills the button, as a background picture does.
    removeButton_->setImage(imageInBundle(myBundle_, "close"));
    removeButton_->setAccessibility(AccessibilityRole::button, articleText(removeNameKey()));
    removeButton_->addTarget([this] { remove(); }, UIControlEvent::touchUpInside);
    contentView()->addSubview(removeButton_);
}

// Layout

void MediaCollectionViewCell::setFrame(const CGRect& frame) {
    const CGSize before = this->frame().size;
    UICollectionViewCell::setFrame(frame);
    if (removeButton_ && before != frame.size) layoutForStyle();
}

void MediaCollectionViewCell::setArticleEditStyle(std::int64_t style) {
    articleEditStyle_ = style;
    layoutForStyle();
}

void MediaCollectionViewCell::layoutForStyle() {
    const auto layout = mediaTileLayout(articleEditStyle_, frame().size,
                                        {img_->frame(), myTextView_->frame(), myTextPlaceholder_->frame()});
    if (!layout) return;
    img_->setFrame(layout->picture);
    myTextView_->setFrame(layout->caption);
    myTextPlaceholder_->setFrame(layout->placeholder);
    actView_->setCenter(img_->center());
}

void MediaCollectionViewCell::beginShake() {
    // A caption under edit is not rotated with its tile, so editing ends first.
    if (myTextView_->isFirstResponder()) myTextView_->resignFirstResponder();
    addAnimationForKey({.keyPath = "transform.rotation",
                        .values = {-0.03, 0.03, -0.03},
                        .duration = 0.2,
                        .repeatCount = CAKeyframeAnimation::withoutEnd,
                        .removedOnCompletion = false,
                        .fillMode = CAMediaTimingFillMode::forwards},
                       shakeKey);
    removeButton_->setAlpha(0);
}

void MediaCollectionViewCell::stopShake() {
    removeButton_->setAlpha(1);
    removeAllAnimations();
}

// The item

void MediaCollectionViewCell::setImage(std::shared_ptr<const UIImage> image) {
    shownData_ = {};
    img_->setImage(std::move(image));
}

void MediaCollectionViewCell::showData(const Data& data) {
    const bool isShown = shownData_ && shownData_.bytes() == data.bytes() && shownData_.size() == data.size();
    if (isShown) return;
    setImage(UIImage::imageWithData(data));
    shownData_ = data;
}

void MediaCollectionViewCell::endEditing() {
    if (myTextView_->isFirstResponder()) myTextView_->resignFirstResponder();
}

void MediaCollectionViewCell::showExisting(const Dictionary& record, bool isAnother, Spinner spinner) {
    // Kept on purpose: a tile that is shown again shows the server's caption, even when the item holds an edited one.
    // The save sends the item's caption.
    showCaption(recordText(record, "text"));
    const auto weak = std::weak_ptr(std::static_pointer_cast<MediaCollectionViewCell>(shared_from_this()));
    const Data cached = OstrelRequestManager::defaultOstrelRequestManager().request(
        recordText(record, "thumbnail"), [weak](const Data& data, bool loaded, const auto&) {
            // Kept on purpose: the thumbnail is shown even when the tile has another item by now.
            const auto tile = weak.lock();
            if (!tile) return;
            if (loaded) tile->showData(data);
            tile->actView_->stopAnimating();
        });
    if (cached) {
        showData(cached);
        if (spinner == Spinner::stopsForCachedData) actView_->stopAnimating();
    } else if (isAnother) {
        setImage(imageInBundle(ostrelArticleBundle_, "loading"));
    }
}

void MediaCollectionViewCell::showNew(std::shared_ptr<const UIImage> picture,
                                      const std::optional<std::string>& caption) {
    setImage(std::move(picture));
    showCaption(caption.value_or(""));
    actView_->stopAnimating();
}

// The caption

void MediaCollectionViewCell::showCaption(const std::string& text) {
    myTextView_->setText(text);
    // Kept on purpose: an empty caption leaves the placeholder shown or hidden as it was.
    if (!text.empty()) myTextPlaceholder_->setAlpha(0);
    updateName();
}

void MediaCollectionViewCell::keepCaption(const std::string& text) {
    ArticleMediaItem* const shown = item();
    if (!shown) return;
    shown->setText(text);
    shown->setTextChanged(true);
}

void MediaCollectionViewCell::textViewDidChange(UITextView& textView) {
    keepCaption(textView.text());
    myTextPlaceholder_->setAlpha(textView.text().empty() ? 1 : 0);
    updateName();
    captionDidChange();
}

void MediaCollectionViewCell::textViewDidEndEditing(UITextView& textView) {
    keepCaption(textView.text());
    captionDidChange();
}

// Accessibility

void MediaCollectionViewCell::setPlace(std::size_t index, std::size_t count) {
    if (index == index_ && count == count_) return;
    index_ = index;
    count_ = count;
    updateName();
}

void MediaCollectionViewCell::updateName() {
    const std::string_view caption = prefixOfUtf16Length(myTextView_->text(), spokenCaptionLength);
    std::string name = articleText(caption.empty() ? nameKey() : captionedNameKey());
    name = formatLong(name, static_cast<std::int64_t>(index_) + 1);
    name = formatLong(name, static_cast<std::int64_t>(count_));
    if (const auto place = name.find("%@"); place != std::string::npos) name.replace(place, 2, caption);
    setAccessibility(AccessibilityRole::listItem, std::move(name));
}

}  // namespace ostrel
