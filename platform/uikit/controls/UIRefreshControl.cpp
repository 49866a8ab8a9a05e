#include "platform/uikit/controls/UIRefreshControl.h"

namespace ostrel {

namespace {

constexpr CGFloat wheelSide = 24;
constexpr CGFloat titleHeight = 15;
constexpr CGFloat gap = 5;

}  // namespace

class UIRefreshControl::Wheel final : public UIView {
public:
    void show(const SpinnerContent& content) {
        if (content == content_) return;
        content_ = content;
        setNeedsDisplay();
    }
    const SpinnerContent& content() const { return content_; }

protected:
    ViewContent makeContent() const override { return content_; }

private:
    SpinnerContent content_{.color = UIColor::darkGray(), .animating = false, .progress = 0};
};

UIRefreshControl::UIRefreshControl() : UIControl(CGRect{0, 0, 320, height}) {
    setUserInteractionEnabled(false);
    setHidden(true);
}

UIRefreshControl::~UIRefreshControl() = default;

void UIRefreshControl::initialise() {
    wheel_ = make<Wheel>();
    title_ = make<UILabel>();
    title_->setFont(UIFont::system(11));
    title_->setTextColor(UIColor::secondaryLabel());
    title_->setTextAlignment(NSTextAlignment::center);
    addSubview(wheel_);
    addSubview(title_);
}

void UIRefreshControl::setTintColor(UIColor color) {
    tint_ = color;
    SpinnerContent content = wheel_->content();
    content.color = color;
    wheel_->show(content);
}

void UIRefreshControl::setAttributedTitle(std::string title) {
    title_->setText(std::move(title));
    setNeedsLayout();
}

const std::string& UIRefreshControl::attributedTitle() const { return title_->text(); }

void UIRefreshControl::beginRefreshing() {
    if (refreshing_) return;
    refreshing_ = true;
    wheel_->show({.color = tint_, .animating = true, .progress = 1});
    setHidden(false);
    if (refreshingDidChange) refreshingDidChange();
}

void UIRefreshControl::endRefreshing() {
    if (!refreshing_) return;
    refreshing_ = false;
    wheel_->show({.color = tint_, .animating = false, .progress = 1});
    if (refreshingDidChange) refreshingDidChange();
}

void UIRefreshControl::setPullProgress(CGFloat progress) {
    if (refreshing_) return;
    progress = std::clamp(progress, 0.0, 1.0);
    setHidden(progress <= 0);
    if (progress > 0) wheel_->show({.color = tint_, .animating = false, .progress = progress});
}

void UIRefreshControl::layoutSubviews() {
    const CGFloat width = bounds().width();
    const bool hasTitle = !title_->text().empty();
    const CGFloat content = wheelSide + (hasTitle ? gap + titleHeight : 0);
    const CGFloat top = (bounds().height() - content) / 2;
    wheel_->setFrame({(width - wheelSide) / 2, top, wheelSide, wheelSide});
    title_->setFrame({0, top + wheelSide + gap, width, titleHeight});
}

}  // namespace ostrel
