#include "reader/screens/ReaderNotice.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/graphics/TextMeasurer.h"

#include <algorithm>

namespace ostrel {

namespace {
constexpr double secondsShown = 4;
constexpr CGFloat mostWidth = 420, outerMargin = 16, innerMargin = 16, innerPadding = 12, distance = 16;
constexpr int mostLines = 2;
}  // namespace

ReaderNotice::~ReaderNotice() {
    if (timer_) RunLoop::main().cancel(timer_);
}

void ReaderNotice::initialise() {
    setSurface(true);
    setBackgroundColor(UIColor::rgb(0x22262E, 0.94f));
    setCornerRadius(10);
    setAlpha(0);
    setUserInteractionEnabled(false);
    text_ = make<UILabel>();
    text_->setTextColor(UIColor::white());
    text_->setFont(UIFont::system(14));
    text_->setNumberOfLines(mostLines);
    text_->setTextAlignment(NSTextAlignment::center);
    addSubview(text_);
}

void ReaderNotice::placeIn(const CGRect& area) {
    const CGFloat width = std::min(area.width() - 2 * outerMargin, mostWidth);
    const CGFloat textWidth = width - 2 * innerMargin;
    const CGFloat textHeight =
        TextMeasurer::shared().measure(text_->text(), text_->font(), textWidth, mostLines).size.height;
    const CGFloat height = textHeight + 2 * innerPadding;
    setFrame({area.midX() - width / 2, area.maxY() - distance - height, width, height});
    text_->setFrame({innerMargin, innerPadding, textWidth, textHeight});
}

void ReaderNotice::show(const std::string& text) {
    text_->setText(text);
    if (UIView* const parent = superview()) {
        parent->bringSubviewToFront(std::static_pointer_cast<ReaderNotice>(shared_from_this()));
    }
    UIView::animate(0.2, [this] { setAlpha(1); });
    if (timer_) RunLoop::main().cancel(timer_);
    timer_ = RunLoop::main().performAfter(secondsShown, [weak = weak_from_this()] {
        const auto self = std::static_pointer_cast<ReaderNotice>(weak.lock());
        if (!self) return;
        self->timer_ = 0;
        UIView::animate(0.3, [&self] { self->setAlpha(0); });
    });
}

}  // namespace ostrel
