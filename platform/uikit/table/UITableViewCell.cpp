#include "platform/uikit/table/UITableViewCell.h"

#include "platform/foundation/resources/PlatformText.h"

namespace ostrel {

namespace {

constexpr CGFloat lowestRow = 44;
constexpr CGFloat sideInset = 16;
constexpr CGFloat textMargin = 12;  // above and below the labels of a row that sizes itself
constexpr CGFloat labelGap = 2;
constexpr CGFloat chevronWidth = 9, chevronHeight = 14;
constexpr CGFloat detailButtonSide = 44;  // a finger's size; the symbol in it is smaller
constexpr CGFloat detailSymbolInset = 11;
constexpr double fade = 0.3;
constexpr UIColor selectionGray = UIColor::rgb(0xE8EAF0);

}  // namespace

CGFloat UITableViewCell::currentRowWidth = 320;

UITableViewCell::UITableViewCell(UITableViewCellStyle style, std::string reuseIdentifier)
    : UIView({0, 0, currentRowWidth, lowestRow}), reuseIdentifier_(std::move(reuseIdentifier)), style_(style) {
    setBackgroundColor(UIColor::secondaryGroupedBackground());
    setSurface(true);
    setDefaultAccessibility(AccessibilityRole::listItem, {});
}

void UITableViewCell::initialise() {}

const std::shared_ptr<UILabel>& UITableViewCell::textLabel() {
    if (!textLabel_) {
        textLabel_ = make<UILabel>();
        textLabel_->setNumberOfLines(0);
        addSubview(textLabel_);
    }
    return textLabel_;
}

const std::shared_ptr<UILabel>& UITableViewCell::builtInDetailLabel() {
    if (!detailLabel_) {
        detailLabel_ = make<UILabel>();
        detailLabel_->setFont(UIFont::system(13));
        detailLabel_->setTextColor(UIColor::secondaryLabel());
        detailLabel_->setNumberOfLines(0);
        addSubview(detailLabel_);
    }
    return detailLabel_;
}

void UITableViewCell::setAccessoryType(UITableViewCellAccessoryType type) {
    if (accessoryType_ == type) return;
    accessoryType_ = type;
    const bool hasImage = type != UITableViewCellAccessoryType::none;
    const bool hasButton = type == UITableViewCellAccessoryType::detailDisclosureButton;
    if (hasImage && !accessoryImage_) {
        accessoryImage_ = make<UIImageView>();
        accessoryImage_->setImage(UIImage::systemImageNamed("chevron.right"));
        accessoryImage_->setContentMode(UIViewContentMode::scaleAspectFit);
        accessoryImage_->setTintColor(UIColor::tertiaryLabel());
        addSubview(accessoryImage_);
    } else if (!hasImage && accessoryImage_) {
        std::exchange(accessoryImage_, nullptr)->removeFromSuperview();
    }
    if (hasButton && !accessoryButton_) {
        accessoryButton_ = make<UIButton>(UIButton::Type::system);
        accessoryButton_->setImage(UIImage::systemImageNamed("info.circle"));
        accessoryButton_->setContentInsets(
            {detailSymbolInset, detailSymbolInset, detailSymbolInset, detailSymbolInset});
        accessoryButton_->setAccessibility(AccessibilityRole::button, platformText("More Info"));
        accessoryButton_->addTarget(
            [this] {
                if (const auto tapped = accessoryTapped) tapped();
            },
            UIControlEvent::touchUpInside);
        addSubview(accessoryButton_);
    } else if (!hasButton && accessoryButton_) {
        std::exchange(accessoryButton_, nullptr)->removeFromSuperview();
    }
    setNeedsLayout();
}

CGFloat UITableViewCell::accessoryWidth() const {
    switch (accessoryType_) {
    case UITableViewCellAccessoryType::none: return 0;
    case UITableViewCellAccessoryType::disclosureIndicator: return chevronWidth + 8;
    case UITableViewCellAccessoryType::detailDisclosureButton: return chevronWidth + detailButtonSide;
    }
    return 0;
}

void UITableViewCell::layoutSubviews() {
    const CGFloat width = bounds().width(), rowHeight = bounds().height();
    const CGFloat textWidth = std::max(0.0, width - 2 * sideInset - accessoryWidth());
    const bool hasDetail = detailLabel_ && !detailLabel_->text().empty();
    if (textLabel_ && !hasDetail) textLabel_->setFrame({sideInset, 0, textWidth, rowHeight});
    if (hasDetail) {
        const CGFloat text = textLabel_ ? textLabel_->sizeThatFits({textWidth, CGFLOAT_MAX_TEXT}).height : 0;
        const CGFloat detail = detailLabel_->sizeThatFits({textWidth, CGFLOAT_MAX_TEXT}).height;
        const CGFloat gap = text > 0 ? labelGap : 0;
        const CGFloat top = std::max(0.0, (rowHeight - text - gap - detail) / 2);
        if (textLabel_) textLabel_->setFrame({sideInset, top, textWidth, text});
        detailLabel_->setFrame({sideInset, top + text + gap, textWidth, detail});
    }
    if (accessoryImage_) {
        accessoryImage_->setFrame(
            {width - sideInset - chevronWidth, (rowHeight - chevronHeight) / 2, chevronWidth, chevronHeight});
    }
    if (accessoryButton_) {
        accessoryButton_->setFrame({width - sideInset - chevronWidth - detailButtonSide,
                                    (rowHeight - detailButtonSide) / 2, detailButtonSide, detailButtonSide});
    }
    if (selectedBackground_) selectedBackground_->setFrame(bounds());
    if (separator_) separator_->setFrame({sideInset, rowHeight - 0.5, width - sideInset, 0.5});
}

CGFloat UITableViewCell::automaticHeight() const {
    if (const auto constrained = constrainedHeight()) return *constrained;
    const CGFloat textWidth = std::max(0.0, bounds().width() - 2 * sideInset - accessoryWidth());
    const auto needed = [&](const std::shared_ptr<UILabel>& label) {
        return label && !label->text().empty() ? label->sizeThatFits({textWidth, CGFLOAT_MAX_TEXT}).height : 0;
    };
    const CGFloat text = needed(textLabel_), detail = needed(detailLabel_);
    return std::max(lowestRow, std::ceil(text + detail + (text > 0 && detail > 0 ? labelGap : 0)) + 2 * textMargin);
}

void UITableViewCell::setSelected(bool selected, bool animated) {
    if (selected_ == selected) return;
    selected_ = selected;
    updateSelectionLook(animated);
}

void UITableViewCell::setHighlighted(bool highlighted, bool animated) {
    if (highlighted_ == highlighted) return;
    highlighted_ = highlighted;
    updateSelectionLook(animated);
}

void UITableViewCell::updateSelectionLook(bool animated) {
    const bool isGray = (selected_ || highlighted_) && selectionStyle_ == UITableViewCellSelectionStyle::gray;
    if (!selectedBackground_) {
        if (!isGray) return;
        selectedBackground_ = make<UIView>(bounds());
        selectedBackground_->setBackgroundColor(selectionGray);
        selectedBackground_->setUserInteractionEnabled(false);
        selectedBackground_->setAlpha(0);
        selectedBackground_->setCornerRadius(place_.cornerRadius);
        selectedBackground_->setRoundedCorners(place_.roundsTop, place_.roundsBottom);
        insertSubview(selectedBackground_, 0);
    }
    if (animated) {
        UIView::animate(fade, [&] { selectedBackground_->setAlpha(isGray ? 1 : 0); });
    } else {
        selectedBackground_->setAlpha(isGray ? 1 : 0);
    }
}

void UITableViewCell::setPlace(const Place& place) {
    const bool isRounded = place.cornerRadius > 0 && (place.roundsTop || place.roundsBottom);
    setCornerRadius(isRounded ? place.cornerRadius : 0);
    setRoundedCorners(isRounded && place.roundsTop, isRounded && place.roundsBottom);
    setClipsToBounds(isRounded);
    if (place_ == place) return;
    place_ = place;
    if (selectedBackground_) {
        selectedBackground_->setCornerRadius(place.cornerRadius);
        selectedBackground_->setRoundedCorners(place.roundsTop, place.roundsBottom);
    }
    if (place.hasSeparator && !separator_) {
        separator_ = make<UIView>();
        separator_->setBackgroundColor(UIColor::separator());
        separator_->setUserInteractionEnabled(false);
        addSubview(separator_);
    }
    if (separator_) separator_->setHidden(!place.hasSeparator);
}

void UITableViewCell::subviewSizeDidChange(UIView& subview) {
    UIView::subviewSizeDidChange(subview);
    if (heightDidChange) heightDidChange();
}

}  // namespace ostrel
