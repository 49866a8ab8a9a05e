#include "platform/uikit/screens/NavigationBarContents.h"

#include "platform/foundation/resources/PlatformText.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr CGFloat edgeMargin = 8;
constexpr CGFloat titleGap = 8;
constexpr CGFloat touchTarget = 44;
constexpr CGFloat slide = 60;

CGFloat widthOf(const UIButton& button) { return std::max(touchTarget, std::ceil(button.sizeThatFits({}).width)); }

}  // namespace

NavigationBarContents::NavigationBarContents(Description description, UIColor tint, std::function<void()> goBack)
    : description_(std::move(description)), tint_(tint), goBack_(std::move(goBack)) {}

void NavigationBarContents::initialise() {
    title_ = make<UILabel>();
    title_->setFont(UIFont::mediumSystem(17));
    title_->setTextAlignment(NSTextAlignment::center);
    addSubview(title_);
    if (description_.titleView) addSubview(description_.titleView);
    if (description_.back && !description_.left) {
        back_ = make<UIButton>(UIButton::Type::system);
        back_->setImage(UIImage::systemImageNamed("chevron.left"));
        back_->setTitleFont(UIFont::system(17));
        back_->setImagePadding(2);
        back_->setContentAlignment(NSTextAlignment::left);
        back_->setTintColor(tint_);
        back_->addTarget(goBack_, UIControlEvent::touchUpInside);
        addSubview(back_);
    }
    if (description_.left) addSubview(left_ = buttonFor(description_.left));
    if (description_.right) addSubview(right_ = buttonFor(description_.right));
    refresh();
}

std::shared_ptr<UIButton> NavigationBarContents::buttonFor(const std::shared_ptr<UIBarButtonItem>& item) const {
    auto button = make<UIButton>(UIButton::Type::system);
    button->setTintColor(tint_);
    button->setTitleFont(item->style() == UIBarButtonItem::Style::done ? UIFont::mediumSystem(17) : UIFont::system(17));
    button->setContentInsets({0, edgeMargin, 0, edgeMargin});
    button->addTarget(
        [weak = std::weak_ptr(item)] {
            if (const auto pressed = weak.lock()) pressed->press();
        },
        UIControlEvent::touchUpInside);
    item->setView(button);
    return button;
}

bool NavigationBarContents::update(const Description& description) {
    if (description.titleView != description_.titleView || description.left != description_.left ||
        description.right != description_.right || description.back.has_value() != description_.back.has_value()) {
        return false;
    }
    description_ = description;
    refresh();
    return true;
}

void NavigationBarContents::refresh() {
    title_->setText(description_.title);
    title_->setHidden(description_.titleView != nullptr);
    title_->setAccessibility(AccessibilityRole::text, description_.title);
    if (back_) back_->setAccessibility(AccessibilityRole::button, platformText("Back"));
    const auto show = [](const std::shared_ptr<UIButton>& button, const std::shared_ptr<UIBarButtonItem>& item) {
        if (!button) return;
        button->setImage(item->image());
        button->setTitle(item->image() ? "" : item->title());
        button->setEnabled(item->isEnabled());
        button->setAccessibility(AccessibilityRole::button, item->accessibilityLabel());
    };
    show(left_, description_.left);
    show(right_, description_.right);
    setNeedsLayout();
}

void NavigationBarContents::setDisplacement(double displacement) {
    setAlpha(std::max(0.0, 1 - std::abs(displacement)));
    const auto moved = CGAffineTransform::translation(displacement * slide, 0);
    title_->setTransform(moved);
    if (description_.titleView) description_.titleView->setTransform(moved);
}

void NavigationBarContents::layoutSubviews() {
    const CGSize size = bounds().size;
    CGFloat low = edgeMargin, high = size.width - edgeMargin;
    if (left_) {
        const CGFloat width = std::min(widthOf(*left_), size.width / 3);
        left_->setFrame({low, 0, width, size.height});
        low += width + titleGap;
    }
    if (right_) {
        const CGFloat width = std::min(widthOf(*right_), size.width / 3);
        right_->setFrame({high - width, 0, width, size.height});
        high -= width + titleGap;
    }
    if (back_) {
        // A long title of the screen below is shortened in favour of this screen's title.
        const CGFloat most = std::max(touchTarget, size.width / 3);
        back_->setTitle(description_.back->empty() ? platformText("Back") : *description_.back);
        if (widthOf(*back_) > most) back_->setTitle(platformText("Back"));
        const CGFloat width = std::min(widthOf(*back_), most);
        back_->setFrame({low, 0, width, size.height});
        low += width + titleGap;
    }
    const CGFloat room = std::max(0.0, high - low);
    UIView& middle = description_.titleView ? *description_.titleView : static_cast<UIView&>(*title_);
    const CGSize wanted = description_.titleView && middle.frame().width() > 0
                              ? middle.frame().size
                              : middle.sizeThatFits({room, size.height});
    const CGFloat width = std::min(std::ceil(wanted.width), room);
    const CGFloat height = description_.titleView ? std::min(std::ceil(wanted.height), size.height) : size.height;
    // The title stands in the middle of the bar, or as near to the middle as the buttons allow.
    const CGFloat x = std::max(low, std::min(std::floor((size.width - width) / 2), high - width));
    middle.setFrame({x, std::floor((size.height - height) / 2), width, height});
}

}  // namespace ostrel
