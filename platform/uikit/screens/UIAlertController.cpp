#include "platform/uikit/screens/UIAlertController.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIScrollView.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr CGFloat fieldInset = 8;  // between a field's border and its text
constexpr CGFloat alertWidth = 270;
constexpr CGFloat listWidth = 280;
constexpr CGFloat alertTextMargin = 16;
constexpr CGFloat headerPadding = 19;
constexpr CGFloat lineGap = 4;
constexpr CGFloat fieldHeight = 34;
constexpr CGFloat fieldGap = 10;
constexpr CGFloat alertRow = 44;
constexpr CGFloat sheetRow = 56;
constexpr CGFloat sheetMargin = 8;
constexpr CGFloat sheetRadius = 13;
constexpr CGFloat hairline = 0.5;

bool isPhone() { return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::phone; }

std::shared_ptr<UILabel> makeLabel(const std::string& text, UIFont font, UIColor color) {
    auto label = make<UILabel>();
    label->setText(text);
    label->setFont(std::move(font));
    label->setTextColor(color);
    label->setTextAlignment(NSTextAlignment::center);
    label->setNumberOfLines(0);
    label->setAccessibility(AccessibilityRole::text, text);
    return label;
}

}  // namespace

struct UIAlertController::Parts {
    std::shared_ptr<UIView> group;  ///< all but a separate cancelling button
    std::shared_ptr<UIScrollView> header, list;
    std::shared_ptr<UILabel> title, message;
    std::vector<std::shared_ptr<UIButton>> buttons;  ///< as they are shown, from top or left
    std::vector<std::shared_ptr<UIView>> lines;      ///< one before each button of the list
    std::shared_ptr<UIButton> separateCancel;
    bool sideBySide = false;
    CGFloat row = alertRow;

    CGFloat headerHeight(CGFloat width, std::size_t fieldCount) const {
        const CGFloat room = width - 2 * alertTextMargin;
        CGFloat height = 0;
        if (title) height += std::ceil(title->sizeThatFits({room, CGFLOAT_MAX_TEXT}).height);
        if (message)
            height += std::ceil(message->sizeThatFits({room, CGFLOAT_MAX_TEXT}).height) + (title ? lineGap : 0);
        height += static_cast<CGFloat>(fieldCount) * (fieldHeight + fieldGap);
        return height > 0 ? height + 2 * headerPadding : 0;
    }
    CGFloat listHeight() const { return sideBySide ? row : row * static_cast<CGFloat>(buttons.size()); }
};

UIAlertController::UIAlertController(std::string title, std::string message, Style style)
    : message_(std::move(message)), style_(style) {
    setTitle(std::move(title));
    modalPresentationStyle =
        style == Style::alert ? UIModalPresentationStyle::overFullScreen : UIModalPresentationStyle::popover;
}

PresentationKind UIAlertController::presentationKind() const {
    if (style_ == Style::alert) return PresentationKind::alert;
    return isPhone() ? PresentationKind::bareSheet : PresentationKind::popover;
}

void UIAlertController::addAction(UIAlertAction action) {
    actions_.push_back(std::move(action));
    if (isViewLoaded()) build();
}

void UIAlertController::addTextField(const std::function<void(UITextField&)>& configure) {
    auto field = make<UITextField>();
    field->setTextInsets({0, fieldInset, 0, fieldInset});
    field->setFont(UIFont::system(14));
    field->setBackgroundColor(UIColor::white());
    field->setBorderColor(UIColor::separator());
    field->setBorderWidth(1);
    field->setCornerRadius(7);
    if (configure) configure(*field);
    if (field->accessibility().label.empty()) {
        field->setAccessibility(AccessibilityRole::textField, field->placeholder());
    }
    // Return goes to the next field, and from the last one to the preferred action.
    field->addTarget(
        [weak = weak_from_this(), index = fields_.size()] {
            const auto self = std::static_pointer_cast<UIAlertController>(weak.lock());
            if (!self) return;
            if (index + 1 < self->fields_.size()) {
                self->fields_[index + 1]->becomeFirstResponder();
            } else {
                self->choosePreferred();
            }
        },
        UIControlEvent::editingDidEndOnExit);
    fields_.push_back(std::move(field));
    if (isViewLoaded()) build();
}

void UIAlertController::loadView() {
    UIViewController::loadView();
    view()->setBackgroundColor(UIColor::clear());
    view()->setSurface(true);
    build();
}

void UIAlertController::build() {
    const bool isBare = presentationKind() == PresentationKind::bareSheet;
    while (!view()->subviews().empty()) view()->subviews().back()->removeFromSuperview();
    parts_ = std::make_shared<Parts>();
    Parts& parts = *parts_;
    parts.row = isBare ? sheetRow : alertRow;
    const bool isAlert = style_ == Style::alert;

    parts.group = make<UIView>();
    parts.group->setBackgroundColor(UIColor::white());
    parts.group->setCornerRadius(isBare ? sheetRadius : 0);
    parts.group->setClipsToBounds(isBare);
    view()->addSubview(parts.group);
    parts.header = make<UIScrollView>();
    parts.list = make<UIScrollView>();
    parts.group->addSubview(parts.header);
    parts.group->addSubview(parts.list);
    if (!title().empty()) {
        parts.title = makeLabel(title(), UIFont::mediumSystem(isAlert ? 17 : 13),
                                isAlert ? UIColor::label() : UIColor::secondaryLabel());
        parts.header->addSubview(parts.title);
    }
    if (!message_.empty()) {
        parts.message = makeLabel(message_, UIFont::system(13), isAlert ? UIColor::label() : UIColor::secondaryLabel());
        parts.header->addSubview(parts.message);
    }
    for (const auto& field : fields_) parts.header->addSubview(field);

    const auto makeButton = [&](std::size_t index) {
        const UIAlertAction& action = actions_[index];
        const bool isCancel = action.style == UIAlertAction::Style::cancel;
        const CGFloat size = isBare ? 20 : 17;
        auto button = make<UIButton>(UIButton::Type::custom);
        button->setTitle(action.title);
        button->setTitleFont(isCancel ? UIFont::mediumSystem(size) : UIFont::system(size));
        button->setTitleColor(action.style == UIAlertAction::Style::destructive ? UIColor::destructive()
                                                                                : UIColor::tint());
        button->setBackgroundColor(UIColor::white(), UIControlState::normal);
        button->setBackgroundColor(UIColor::rgb(0xE9EAEE), UIControlState::highlighted);
        button->setContentInsets({0, 8, 0, 8});
        button->setAccessibility(AccessibilityRole::button, action.title);
        button->addTarget(
            [weak = weak_from_this(), index] {
                const auto self = std::static_pointer_cast<UIAlertController>(weak.lock());
                if (self) self->choose(index);
            },
            UIControlEvent::touchUpInside);
        return button;
    };
    // The cancelling action is the last one, the left one of a pair, and separate in a sheet; a popover has none.
    std::vector<std::size_t> order;
    std::optional<std::size_t> cancel;
    for (std::size_t i = 0; i < actions_.size(); ++i) {
        if (actions_[i].style == UIAlertAction::Style::cancel && !cancel) {
            cancel = i;
        } else {
            order.push_back(i);
        }
    }
    if (cancel && isBare) {
        parts.separateCancel = makeButton(*cancel);
        parts.separateCancel->setCornerRadius(sheetRadius);
        parts.separateCancel->setClipsToBounds(true);
        view()->addSubview(parts.separateCancel);
    } else if (cancel && isAlert) {
        order.insert(order.size() == 1 ? order.begin() : order.end(), *cancel);
    }
    bool fitsPair = true;
    for (const std::size_t index : order) {
        auto button = makeButton(index);
        fitsPair = fitsPair && button->sizeThatFits({}).width <= alertWidth / 2;
        auto line = make<UIView>();
        line->setBackgroundColor(UIColor::separator());
        parts.list->addSubview(button);
        parts.list->addSubview(line);
        parts.buttons.push_back(std::move(button));
        parts.lines.push_back(std::move(line));
    }
    parts.sideBySide = isAlert && parts.buttons.size() == 2 && fitsPair;
    // Titles that are too long for a pair stand one above the other, the cancelling action below.
    if (isAlert && cancel && parts.buttons.size() == 2 && !fitsPair) std::swap(parts.buttons[0], parts.buttons[1]);
    for (const auto& line : parts.lines) parts.list->bringSubviewToFront(line);
    layout();
}

void UIAlertController::layout() {
    if (!parts_) return;
    Parts& parts = *parts_;
    const bool isBare = presentationKind() == PresentationKind::bareSheet;
    const CGFloat margin = isBare ? sheetMargin : 0;
    CGRect bounds = view()->bounds();
    const CGFloat usual = style_ == Style::alert ? alertWidth : listWidth;
    const CGFloat width = bounds.width() > 0 ? bounds.width() - 2 * margin : usual;
    const CGFloat header = parts.headerHeight(width, fields_.size());
    const CGFloat list = parts.listHeight();
    const CGFloat cancel = parts.separateCancel ? sheetRow + sheetMargin : 0;
    const CGSize preferred{isBare ? 0 : usual, header + list + cancel + 2 * margin};
    if (preferred != preferredContentSize) {
        preferredContentSize = preferred;
        preferredContentSizeDidChange();
    }
    if (bounds.isEmpty()) return;
    if (isBare && view()->window()) {
        bounds.size.height -= view()->window()->safeAreaInsets().bottom;
    }
    // In a low window the text scrolls first; the buttons keep at least half of the height.
    const CGFloat room = std::max(0.0, bounds.height() - cancel - 2 * margin);
    const CGFloat shownList = std::min(list, std::max(room / 2, room - header));
    const CGFloat shownHeader = std::min(header, room - shownList);
    const CGFloat groupY = bounds.height() - margin - cancel - shownHeader - shownList;
    parts.group->setFrame({margin, groupY, width, shownHeader + shownList});
    parts.header->setFrame({0, 0, width, shownHeader});
    parts.header->setContentSize({width, header});
    parts.header->setScrollEnabled(header > shownHeader);
    parts.list->setFrame({0, shownHeader, width, shownList});
    parts.list->setContentSize({width, list});
    parts.list->setScrollEnabled(list > shownList);
    if (parts.separateCancel) {
        parts.separateCancel->setFrame({margin, bounds.height() - margin - sheetRow, width, sheetRow});
    }

    CGFloat y = headerPadding;
    const auto place = [&](UIView& part, CGFloat height, CGFloat gap) {
        part.setFrame({alertTextMargin, y, width - 2 * alertTextMargin, height});
        y += height + gap;
    };
    const CGSize lines{width - 2 * alertTextMargin, CGFLOAT_MAX_TEXT};
    if (parts.title) place(*parts.title, std::ceil(parts.title->sizeThatFits(lines).height), lineGap);
    if (parts.message) place(*parts.message, std::ceil(parts.message->sizeThatFits(lines).height), 0);
    for (const auto& field : fields_) {
        y += fieldGap;
        place(*field, fieldHeight, 0);
    }
    const CGFloat count = static_cast<CGFloat>(parts.buttons.size());
    for (std::size_t i = 0; i < parts.buttons.size(); ++i) {
        const CGFloat number = static_cast<CGFloat>(i);
        if (parts.sideBySide) {
            const CGFloat x = number * width / count;
            parts.buttons[i]->setFrame({x, 0, width / count, parts.row});
            parts.lines[i]->setFrame(i == 0 ? CGRect{0, 0, width, hairline} : CGRect{x, 0, hairline, parts.row});
        } else {
            parts.buttons[i]->setFrame({0, number * parts.row, width, parts.row});
            parts.lines[i]->setFrame({0, number * parts.row, width, i > 0 || header > 0 ? hairline : 0});
        }
    }
}

void UIAlertController::viewDidLayoutSubviews() {
    UIViewController::viewDidLayoutSubviews();
    layout();
}

void UIAlertController::viewWillAppear(bool animated) {
    UIViewController::viewWillAppear(animated);
    chosen_ = false;
}

void UIAlertController::viewDidAppear(bool animated) {
    UIViewController::viewDidAppear(animated);
    if (!fields_.empty()) fields_.front()->becomeFirstResponder();
    if (const auto& announce = UIApplication::sharedApplication().announce) {
        announce(message_.empty() ? title() : title().empty() ? message_ : title() + "\n" + message_);
    }
}

void UIAlertController::choose(std::size_t index) {
    if (chosen_ || index >= actions_.size()) return;
    chosen_ = true;
    auto handler = actions_[index].handler;
    dismissViewControllerAnimated(true, [handler = std::move(handler)] {
        if (handler) handler();
    });
}

bool UIAlertController::choosePreferred() {
    const auto ofStyle = [this](UIAlertAction::Style style) {
        return std::ranges::find(actions_, style, &UIAlertAction::style);
    };
    auto preferred = ofStyle(UIAlertAction::Style::defaultStyle);
    if (preferred == actions_.end()) preferred = ofStyle(UIAlertAction::Style::cancel);
    if (preferred == actions_.end()) return false;
    choose(static_cast<std::size_t>(preferred - actions_.begin()));
    return true;
}

bool UIAlertController::cancelOperation() {
    const auto cancel = std::ranges::find(actions_, UIAlertAction::Style::cancel, &UIAlertAction::style);
    if (cancel != actions_.end()) {
        choose(static_cast<std::size_t>(cancel - actions_.begin()));
        return true;
    }
    // An action sheet without a cancelling action closes by a press outside or by Escape, as a popover does.
    return style_ == Style::actionSheet && UIViewController::cancelOperation();
}

bool UIAlertController::pressesBegan(const UIPress& press) {
    if (press.key.modifiers == modifierNone) {
        switch (press.key.code) {
        case UIKeyCode::enter:
            if (!press.isRepeat && style_ == Style::alert && choosePreferred()) return true;
            break;
        case UIKeyCode::up:
        case UIKeyCode::left:
        case UIKeyCode::down:
        case UIKeyCode::right:
            if (UIWindow* const window = view()->window()) {
                window->moveFocus(press.key.code == UIKeyCode::down || press.key.code == UIKeyCode::right);
                return true;
            }
            break;
        default: break;
        }
    }
    return UIViewController::pressesBegan(press);
}

}  // namespace ostrel
