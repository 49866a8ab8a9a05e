#include "reader/ReaderTabs.h"

#include "reader/ReaderText.h"

#include <utility>

namespace ostrel {

namespace {

constexpr CGFloat symbolSize = 24;
constexpr UIColor restColor = UIColor::rgb(0x7A8190);

std::shared_ptr<const UIImage> symbol(Path path) {
    return std::make_shared<UIImage>(std::move(path), CGSize{symbolSize, symbolSize});
}

std::shared_ptr<const UIImage> articlesSymbol() {
    Path path;
    path.moveTo(4, 5).lineTo(17, 5).lineTo(17, 19).lineTo(6, 19).cubicTo(4.9, 19, 4, 18.1, 4, 17).close();
    path.moveTo(17, 9).lineTo(20, 9).lineTo(20, 17).cubicTo(20, 18.1, 19.1, 19, 18, 19).lineTo(16, 19);
    path.moveTo(7.5, 9)
        .lineTo(13.5, 9)
        .moveTo(7.5, 12.2)
        .lineTo(13.5, 12.2)
        .moveTo(7.5, 15.4)
        .lineTo(11.5, 15.4);
    return symbol(std::move(path));
}

std::shared_ptr<const UIImage> helpSymbol() {
    Path path;
    path.ellipse(12, 12, 9, 9);
    path.moveTo(9.4, 9.6).cubicTo(9.4, 6.4, 14.6, 6.4, 14.6, 9.6).cubicTo(14.6, 11.6, 12, 11.8, 12, 14.1);
    path.ellipse(12, 17, 0.3, 0.3);
    return symbol(std::move(path));
}

std::shared_ptr<const UIImage> myArticlesSymbol() {
    Path path;
    path.moveTo(19, 12.5).lineTo(19, 17.5).cubicTo(19, 18.6, 18.1, 19.5, 17, 19.5).lineTo(6.5, 19.5);
    path.cubicTo(5.4, 19.5, 4.5, 18.6, 4.5, 17.5)
        .lineTo(4.5, 7)
        .cubicTo(4.5, 5.9, 5.4, 5, 6.5, 5)
        .lineTo(11.5, 5);
    path.moveTo(9.5, 14.5).lineTo(10.1, 11.6).lineTo(18, 3.7).lineTo(20.3, 6).lineTo(12.4, 13.9).close();
    return symbol(std::move(path));
}

}  // namespace

ReaderTab::ReaderTab(std::shared_ptr<const UIImage> symbol, std::string title)
    : symbol_(std::move(symbol)), title_(std::move(title)) {}

void ReaderTab::initialise() {
    image_ = make<UIImageView>();
    image_->setImage(symbol_);
    image_->setContentMode(UIViewContentMode::scaleAspectFit);
    image_->setUserInteractionEnabled(false);
    addSubview(image_);
    label_ = make<UILabel>();
    label_->setUserInteractionEnabled(false);
    addSubview(label_);
    setCornerRadius(8);
    setTitle(title_);
    controlStateDidChange();
}

void ReaderTab::setTitle(std::string title) {
    title_ = std::move(title);
    label_->setText(title_);
    setAccessibility(AccessibilityRole::button, title_);
}

void ReaderTab::setBeside(bool beside) {
    beside_ = beside;
    controlStateDidChange();
    place();
}

void ReaderTab::controlStateDidChange() {
    const bool lit = isSelected() || isHighlighted();
    const UIColor color = lit ? UIColor::tint() : restColor;
    image_->setTintColor(color);
    label_->setTextColor(beside_ && !lit ? UIColor::label() : color);
    label_->setFont(beside_ ? (isSelected() ? UIFont::mediumSystem(15) : UIFont::system(15))
                            : UIFont::mediumSystem(10));
    label_->setTextAlignment(beside_ ? NSTextAlignment::left : NSTextAlignment::center);
    setBackgroundColor(beside_ && isSelected() ? UIColor::tint().withAlpha(0.1f) : UIColor::clear());
}

void ReaderTab::setFrame(const CGRect& frame) {
    UIControl::setFrame(frame);
    if (label_) place();
}

void ReaderTab::layoutSubviews() { place(); }

void ReaderTab::place() {
    const CGSize size = bounds().size;
    if (beside_) {
        image_->setFrame({12, (size.height - symbolSize) / 2, symbolSize, symbolSize});
        label_->setFrame({46, 0, std::max(0.0, size.width - 54), size.height});
    } else {
        image_->setFrame({(size.width - symbolSize) / 2, 7, symbolSize, symbolSize});
        label_->setFrame({2, 33, std::max(0.0, size.width - 4), 14});
    }
}

ReaderTabs::ReaderTabs() = default;

void ReaderTabs::initialise() {
    setSurface(true);
    setBackgroundColor(UIColor::rgb(0xFBFBFD));
    heading_ = make<UILabel>();
    heading_->setText(readerText("Ostrel Reader"));
    heading_->setFont(UIFont::mediumSystem(20));
    addSubview(heading_);
    line_ = make<UIView>();
    line_->setBackgroundColor(UIColor::separator());
    addSubview(line_);
    tabs_ = {make<ReaderTab>(articlesSymbol(), readerText("Articles")),
             make<ReaderTab>(myArticlesSymbol(), readerText("My Articles")),
             make<ReaderTab>(UIImage::systemImageNamed("person.crop.circle"), readerText("Sign In"))};
    for (std::size_t index = 0; index < tabs_.size(); ++index) {
        tabs_[index]->addTarget(
            [this, index] {
                if (index + 1 == tabs_.size()) {
                    if (accountChosen) accountChosen();
                } else if (chosen) {
                    chosen(index);
                }
            },
            UIControlEvent::touchUpInside);
        addSubview(tabs_[index]);
    }
    help_ = make<ReaderTab>(helpSymbol(), readerText("Help"));
    help_->setHidden(true);
    help_->addTarget(
        [this] {
            if (helpChosen) helpChosen();
        },
        UIControlEvent::touchUpInside);
    addSubview(help_);
    setSelected(0);
}

void ReaderTabs::setSidebar(bool sidebar) {
    sidebar_ = sidebar;
    heading_->setHidden(!sidebar);
    for (const auto& tab : tabs_) tab->setBeside(sidebar);
    help_->setBeside(sidebar);
    help_->setHidden(!sidebar);
    place();
}

void ReaderTabs::setSelected(std::size_t index) {
    for (std::size_t i = 0; i < tabs_.size(); ++i) tabs_[i]->setSelected(i == index);
}

void ReaderTabs::setAccountTitle(std::string title) { account()->setTitle(std::move(title)); }

void ReaderTabs::setFrame(const CGRect& frame) {
    UIView::setFrame(frame);
    if (line_) place();
}

void ReaderTabs::place() {
    const CGSize size = bounds().size;
    if (sidebar_) {
        line_->setFrame({size.width - 0.5, 0, 0.5, size.height});
        heading_->setFrame({20, 20, size.width - 32, 28});
        CGFloat y = 68;
        for (std::size_t index = 0; index + 1 < tabs_.size(); ++index, y += 44) {
            tabs_[index]->setFrame({10, y, size.width - 20, 40});
        }
        help_->setFrame({10, size.height - 98, size.width - 20, 40});
        account()->setFrame({10, size.height - 54, size.width - 20, 40});
    } else {
        line_->setFrame({0, 0, size.width, 0.5});
        const CGFloat width = size.width / static_cast<CGFloat>(tabs_.size());
        for (std::size_t index = 0; index < tabs_.size(); ++index) {
            tabs_[index]->setFrame({width * static_cast<CGFloat>(index), 0, width, barHeight});
        }
    }
}

}  // namespace ostrel
