#include "platform/uikit/controls/UISegmentedControl.h"

#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr CGFloat height = 32;
constexpr CGFloat inset = 2;
constexpr CGFloat titlePadding = 14;
constexpr CGFloat roundness = 9;
constexpr double slideDuration = 0.2;

}  // namespace

UISegmentedControl::UISegmentedControl(std::vector<std::string> titles)
    : UIControl({0, 0, 0, height}), titles_(std::move(titles)) {}

void UISegmentedControl::initialise() {
    setBackgroundColor(UIColor::fill());
    setCornerRadius(roundness);
    thumb_ = make<UIView>();
    thumb_->setUserInteractionEnabled(false);
    thumb_->setBackgroundColor(UIColor::white());
    thumb_->setCornerRadius(roundness - inset);
    thumb_->setShadow({.color = UIColor::black().withAlpha(0.12f), .radius = 3, .offset = {0, 1}});
    addSubview(thumb_);
    for (const std::string& title : titles_) {
        const auto label = make<UILabel>();
        label->setText(title);
        label->setTextAlignment(NSTextAlignment::center);
        label->setAdjustsFontSizeToFitWidth(true, 0.75);
        labels_.push_back(label);
        addSubview(label);
    }
    update();
}

void UISegmentedControl::setSelectedSegmentIndex(std::size_t index) {
    if (index >= titles_.size() || index == selectedIndex_) return;
    selectedIndex_ = index;
    update();
    setNeedsLayout();
}

void UISegmentedControl::update() {
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        labels_[i]->setFont(i == selectedIndex_ ? UIFont::mediumSystem(14) : UIFont::system(14));
    }
    setDefaultAccessibility(AccessibilityRole::button, titles_.empty() ? std::string() : titles_[selectedIndex_]);
}

void UISegmentedControl::choose(std::size_t index) {
    if (index >= titles_.size() || index == selectedIndex_) return;
    animate(slideDuration, [&] {
        setSelectedSegmentIndex(index);
        layoutIfNeeded();
    });
    sendActions(UIControlEvent::valueChanged);
}

CGSize UISegmentedControl::sizeThatFits(CGSize) const {
    CGFloat widest = 0;
    for (const std::string& title : titles_) {
        widest = std::max(widest, TextMeasurer::shared().singleLineWidth(title, UIFont::mediumSystem(14)));
    }
    return {std::ceil(widest + 2 * titlePadding) * static_cast<CGFloat>(titles_.size()) + 2 * inset, height};
}

void UISegmentedControl::layoutSubviews() {
    if (labels_.empty()) return;
    const CGRect content = bounds().insetBy(inset, inset);
    const CGFloat width = content.width() / static_cast<CGFloat>(labels_.size());
    for (std::size_t i = 0; i < labels_.size(); ++i) {
        const CGRect segment{content.minX() + width * static_cast<CGFloat>(i), content.minY(), width, content.height()};
        labels_[i]->setFrame(segment);
        if (i == selectedIndex_) thumb_->setFrame(segment);
    }
}

void UISegmentedControl::touchesEnded(const UITouch& touch) {
    const bool wasPressed = isHighlighted();
    UIControl::touchesEnded(touch);
    if (!wasPressed || titles_.empty() || bounds().width() <= 0) return;
    const CGFloat part = touch.locationInView(*this).x / bounds().width() * static_cast<CGFloat>(titles_.size());
    choose(static_cast<std::size_t>(std::clamp(part, 0.0, static_cast<CGFloat>(titles_.size()) - 1)));
}

bool UISegmentedControl::pressesBegan(const UIPress& press) {
    if (isEnabled() && press.key.code == UIKeyCode::left) {
        if (selectedIndex_ > 0) choose(selectedIndex_ - 1);
        return true;
    }
    if (isEnabled() && press.key.code == UIKeyCode::right) {
        choose(selectedIndex_ + 1);
        return true;
    }
    return UIControl::pressesBegan(press);
}

}  // namespace ostrel
