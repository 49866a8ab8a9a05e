#include "platform/uikit/controls/UIActivityIndicatorView.h"

namespace ostrel {

UIActivityIndicatorView::UIActivityIndicatorView(Style style)
    : UIView(style == Style::medium ? CGRect{0, 0, 20, 20} : CGRect{0, 0, 37, 37}) {
    setUserInteractionEnabled(false);
    setHidden(true);
}

void UIActivityIndicatorView::startAnimating() {
    animating_ = true;
    setHidden(false);
    setNeedsDisplay();
}

void UIActivityIndicatorView::stopAnimating() {
    animating_ = false;
    setHidden(hidesWhenStopped_);
    setNeedsDisplay();
}

void UIActivityIndicatorView::setColor(UIColor color) {
    color_ = color;
    setNeedsDisplay();
}

void UIActivityIndicatorView::setHidesWhenStopped(bool hides) {
    hidesWhenStopped_ = hides;
    if (!animating_) setHidden(hides);
}

ViewContent UIActivityIndicatorView::makeContent() const {
    return SpinnerContent{.color = color_, .animating = animating_};
}

}  // namespace ostrel
