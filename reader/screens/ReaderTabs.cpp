#include "reader/screens/ReaderTabs.h"

#include "reader/services/ReaderText.h"

#include <utility>

namespace ostrel {

namespace {

std::shared_ptr<const UIImage> symbol(Path path) {
    return std::make_shared<UIImage>(std::move(path), CGSize{ReaderTab::symbolSize, ReaderTab::symbolSize});
}

std::shared_ptr<const UIImage> articlesSymbol() {
    Path path;
    path.moveTo(4, 5).lineTo(17, 5).lineTo(17, 19).lineTo(6, 19).cubicTo(4.9, 19, 4, 18.1, 4, 17).close();
    path.moveTo(17, 9).lineTo(20, 9).lineTo(20, 17).cubicTo(20, 18.1, 19.1, 19, 18, 19).lineTo(16, 19);
    path.moveTo(7.5, 9).lineTo(13.5, 9).moveTo(7.5, 12.2).lineTo(13.5, 12.2).moveTo(7.5, 15.4).lineTo(11.5, 15.4);
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
    path.cubicTo(5.4, 19.5, 4.5, 18.6, 4.5, 17.5).lineTo(4.5, 7).cubicTo(4.5, 5.9, 5.4, 5, 6.5, 5).lineTo(11.5, 5);
    path.moveTo(9.5, 14.5).lineTo(10.1, 11.6).lineTo(18, 3.7).lineTo(20.3, 6).lineTo(12.4, 13.9).close();
    return symbol(std::move(path));
}

}  // namespace

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
