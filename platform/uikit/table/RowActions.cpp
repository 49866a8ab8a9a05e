#include "platform/uikit/table/RowActions.h"

#include "platform/uikit/controls/UIButton.h"

namespace ostrel {

namespace {

constexpr CGFloat titleMargin = 15;
constexpr UIColor normalColor = UIColor::rgb(0x6F7B91);

}  // namespace

void RowActionsView::initialise() {
    setSurface(true);
    setClipsToBounds(true);
    const UIFont font = UIFont::mediumSystem(15);
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        const auto button = make<UIButton>();
        const bool isDestructive = actions_[i].style == UITableViewRowAction::Style::destructive;
        button->setTitle(actions_[i].title);
        button->setTitleFont(font);
        button->setTitleColor(UIColor::white());
        button->setBackgroundColor(isDestructive ? UIColor::destructive() : normalColor);
        button->addTarget(
            [this, i] {
                if (const auto tell = chosen) tell(i);
            },
            UIControlEvent::touchUpInside);
        const CGFloat title = TextMeasurer::shared().singleLineWidth(actions_[i].title, font);
        widths_.push_back(std::max(narrowestButton, std::ceil(title) + 2 * titleMargin));
        width_ += widths_.back();
        addSubview(button);
        buttons_.push_back(button);
    }
    // The area behind a row's rounded corner takes the colour of the leftmost button.
    if (!buttons_.empty()) setBackgroundColor(buttons_.back()->backgroundColor());
}

void RowActionsView::layoutSubviews() {
    CGFloat right = bounds().width();
    for (std::size_t i = 0; i < buttons_.size(); ++i) {
        right -= widths_[i];
        buttons_[i]->setFrame({right, 0, widths_[i], bounds().height()});
    }
}

}  // namespace ostrel
