#include "platform/uikit/controls/UIButton.h"

namespace ostrel {

namespace {

constexpr double disabledAlpha = 0.35;
constexpr double pressedAlpha = 0.55;

}  // namespace

UIButton::UIButton(Type type, CGRect frame) : UIControl(frame), type_(type) {}

void UIButton::initialise() {
    imageView_ = make<UIImageView>();
    imageView_->setContentMode(UIViewContentMode::scaleAspectFit);
    imageView_->setAccessibility(AccessibilityRole::none, {});
    addSubview(imageView_);
    titleLabel_ = make<UILabel>();
    // The button's own accessibility label is its title.
    titleLabel_->setAccessibility(AccessibilityRole::none, {});
    addSubview(titleLabel_);
    setDefaultAccessibility(AccessibilityRole::button, {});
    update();
}

template <class T>
const T* UIButton::valueForState(const std::map<UIControlState, T>& values, UIControlState state) const {
    auto found = values.find(state);
    if (found == values.end()) found = values.find(UIControlState::normal);
    return found == values.end() ? nullptr : &found->second;
}

const std::string& UIButton::titleForState(UIControlState state) const {
    static const std::string none;
    const std::string* const title = valueForState(titles_, state);
    return title ? *title : none;
}

void UIButton::setTitle(std::string title, UIControlState state) {
    titles_[state] = std::move(title);
    setDefaultAccessibility(AccessibilityRole::button, currentTitle());
    update();
}

void UIButton::setTitleColor(UIColor color, UIControlState state) {
    titleColors_[state] = color;
    update();
}

UIColor UIButton::titleColorForState(UIControlState state) const {
    if (const UIColor* const color = valueForState(titleColors_, state)) return *color;
    return type_ == Type::system ? tint_ : UIColor::white();
}

void UIButton::setImage(std::shared_ptr<const UIImage> image, UIControlState state) {
    images_[state] = std::move(image);
    update();
}

const std::shared_ptr<const UIImage>& UIButton::imageForState(UIControlState state) const {
    static const std::shared_ptr<const UIImage> none;
    const auto* const image = valueForState(images_, state);
    return image ? *image : none;
}

void UIButton::setBackgroundColor(UIColor color, UIControlState state) {
    if (backgrounds_.empty()) plainBackground_ = backgroundColor();
    backgrounds_[state] = color;
    update();
}

UIColor UIButton::backgroundColorForState(UIControlState state) const {
    if (backgrounds_.empty()) return backgroundColor();
    const UIColor* const color = valueForState(backgrounds_, state);
    return color ? *color : plainBackground_;
}

void UIButton::setTitleFont(UIFont font) { titleLabel_->setFont(std::move(font)); }

void UIButton::setTintColor(UIColor color) {
    tint_ = color;
    update();
}

void UIButton::setImagePadding(CGFloat padding) {
    if (padding == padding_) return;
    padding_ = padding;
    setNeedsLayout();
}

void UIButton::setContentInsets(UIEdgeInsets insets) {
    if (insets == insets_) return;
    insets_ = insets;
    setNeedsLayout();
}

void UIButton::setContentAlignment(NSTextAlignment alignment) {
    if (alignment == alignment_) return;
    alignment_ = alignment;
    setNeedsLayout();
}

void UIButton::controlStateDidChange() {
    setDefaultAccessibility(AccessibilityRole::button, currentTitle());
    update();
}

void UIButton::update() {
    if (!titleLabel_) return;
    const UIControlState state = controlState();
    titleLabel_->setText(titleForState(state));
    titleLabel_->setTextColor(titleColorForState(state));
    if (imageForState(state) != imageView_->image()) {
        imageView_->setImage(imageForState(state));
        setNeedsLayout();
    }
    imageView_->setTintColor(tint_);
    if (!backgrounds_.empty()) UIView::setBackgroundColor(backgroundColorForState(state));

    const bool hasOwnLook = titles_.contains(state) || titleColors_.contains(state) || images_.contains(state) ||
                            backgrounds_.contains(state);
    double alpha = 1;
    if (!hasOwnLook && state == UIControlState::disabled) alpha = disabledAlpha;
    if (!hasOwnLook && state == UIControlState::highlighted) alpha = pressedAlpha;
    titleLabel_->setAlpha(alpha);
    imageView_->setAlpha(alpha);
}

CGSize UIButton::sizeThatFits(CGSize) const {
    const CGSize image = imageView_->sizeThatFits({});
    const CGSize title = titleLabel_->sizeThatFits({});
    const CGFloat padding = image.width > 0 && title.width > 0 ? padding_ : 0;
    return {image.width + padding + title.width + insets_.left + insets_.right,
            std::max(image.height, title.height) + insets_.top + insets_.bottom};
}

void UIButton::layoutSubviews() {
    if (!titleLabel_) return;
    const CGRect content = bounds().insetBy(insets_);
    CGSize image = imageView_->sizeThatFits({});
    const CGSize title = titleLabel_->sizeThatFits({});
    // A picture larger than the button shrinks, keeping its shape.
    if (image.width > 0 && image.height > 0) {
        const CGFloat scale = std::min({1.0, content.width() / image.width, content.height() / image.height});
        image = {image.width * scale, image.height * scale};
    }
    const CGFloat padding = image.width > 0 && title.width > 0 ? padding_ : 0;
    const CGFloat titleWidth = std::clamp(title.width, 0.0, std::max(0.0, content.width() - image.width - padding));
    const CGFloat free = std::max(0.0, content.width() - image.width - padding - titleWidth);
    CGFloat x = content.minX();
    if (alignment_ == NSTextAlignment::center) x += free / 2;
    if (alignment_ == NSTextAlignment::right) x += free;
    // Whole points, so that lines and letters are sharp.
    x = std::round(x);
    const auto top = [&](CGFloat height) { return std::round(content.minY() + (content.height() - height) / 2); };
    imageView_->setFrame({x, top(image.height), image.width, image.height});
    titleLabel_->setFrame({x + image.width + padding, top(title.height), titleWidth, title.height});
}

}  // namespace ostrel
