#include "platform/uikit/text/ContextMenu.h"

#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr CGFloat rowHeight = 40;
constexpr CGFloat menuSideInset = 16;
constexpr CGFloat narrowest = 160, widest = 320;
constexpr CGFloat panelPadding = 5;
constexpr CGFloat windowMargin = 8;
constexpr CGFloat panelRadius = 10;
constexpr double menuFade = 0.15;
constexpr UIColor highlightColor = UIColor::rgb(0xE8EAF0);

}  // namespace

/// One action of the menu.
class ContextMenu::Row final : public UIView {
public:
    Row(ContextMenu& menu, std::size_t index) : menu_(menu), index_(index) {}
    void initialise() {
        const Item& item = menu_.items_[index_];
        label_ = make<UILabel>();
        label_->setText(item.title);
        label_->setFont(UIFont::system(15));
        label_->setTextColor(item.isDestructive ? UIColor::destructive() : UIColor::label());
        addSubview(label_);
        setCornerRadius(panelRadius - panelPadding + 1);
        setAccessibility(AccessibilityRole::button, item.title);
    }
    void layoutSubviews() override { label_->setFrame(bounds().insetBy(menuSideInset - panelPadding, 0)); }
    void hoverDidChange(bool inside) override {
        if (inside) menu_.setHighlighted(index_);
    }
    void touchesBegan(const UITouch&) override { menu_.setHighlighted(index_); }
    void touchesMoved(const UITouch& touch) override {
        menu_.setHighlighted(bounds().contains(touch.locationInView(*this)) ? std::optional(index_) : std::nullopt);
    }
    void touchesEnded(const UITouch& touch) override {
        if (bounds().contains(touch.locationInView(*this))) menu_.choose(index_);
    }
    void touchesCancelled(const UITouch&) override { menu_.setHighlighted({}); }

private:
    ContextMenu& menu_;
    std::size_t index_;
    std::shared_ptr<UILabel> label_;
};

ContextMenu::~ContextMenu() = default;

CGPoint ContextMenu::panelOrigin(CGPoint point, CGSize size, CGRect bounds) {
    const CGRect room = bounds.insetBy(windowMargin, windowMargin);
    const auto along = [](CGFloat at, CGFloat length, CGFloat low, CGFloat high) {
        const CGFloat before = at - length;
        if (at + length <= high) return std::max(low, at);
        return before >= low ? before : std::max(low, high - length);
    };
    return {along(point.x, size.width, room.minX(), room.maxX()),
            along(point.y, size.height, room.minY(), room.maxY())};
}

std::shared_ptr<ContextMenu> ContextMenu::show(UIWindow& window, CGPoint point, std::vector<Item> items,
                                               Highlight highlight) {
    if (items.empty()) return nullptr;
    const auto children = window.subviews();
    for (const auto& child : children) {
        if (const auto open = std::dynamic_pointer_cast<ContextMenu>(child)) open->close();
    }
    const auto menu = make<ContextMenu>(std::move(items));
    menu->setFrame(window.bounds());
    menu->setAutoresizingMask(flexibleWidth | flexibleHeight);
    menu->build(point, window.bounds());
    window.addSubview(menu);
    window.pushModalView(menu.get());
    menu->isOpen_ = true;
    window.makeFirstResponder(menu.get());
    menu->panel_->setAlpha(0);
    UIView::animate(menuFade, [&] { menu->panel_->setAlpha(1); });
    if (highlight == Highlight::first) menu->setHighlighted(0);
    return menu;
}

void ContextMenu::build(CGPoint point, const CGRect& bounds) {
    CGFloat width = narrowest;
    for (const Item& item : items_) {
        const CGFloat title = TextMeasurer::shared().singleLineWidth(item.title, UIFont::system(15));
        width = std::max(width, std::ceil(title) + 2 * menuSideInset);
    }
    width = std::min({width, widest, std::max(0.0, bounds.width() - 2 * windowMargin)});
    const CGSize size{width, rowHeight * static_cast<CGFloat>(items_.size()) + 2 * panelPadding};
    panel_ = make<UIView>(CGRect{panelOrigin(point, size, bounds), size});
    panel_->setBackgroundColor(UIColor::white());
    panel_->setCornerRadius(panelRadius);
    panel_->setBorderWidth(0.5);
    panel_->setBorderColor(UIColor::separator());
    panel_->setShadow({.color = UIColor::black().withAlpha(0.22f), .radius = 18, .offset = {0, 6}});
    panel_->setSurface(true);
    addSubview(panel_);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const auto row = make<Row>(*this, i);
        row->setFrame(
            {panelPadding, panelPadding + rowHeight * static_cast<CGFloat>(i), width - 2 * panelPadding, rowHeight});
        panel_->addSubview(row);
        rows_.push_back(row);
    }
}

void ContextMenu::setFrame(const CGRect& newFrame) {
    const CGSize old = frame().size;
    UIView::setFrame(newFrame);
    // A resized window has moved the view at which the menu was opened.
    if (isOpen_ && frame().size != old) close();
}

void ContextMenu::setHighlighted(std::optional<std::size_t> index) {
    if (highlighted_ == index) return;
    highlighted_ = index;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        rows_[i]->setBackgroundColor(i == index ? highlightColor : UIColor::clear());
    }
}

void ContextMenu::choose(std::size_t index) {
    const auto action = items_[index].action;
    const auto kept = shared_from_this();
    close();
    if (action) action();
}

void ContextMenu::close() {
    if (!std::exchange(isOpen_, false)) return;
    const auto kept = shared_from_this();
    setUserInteractionEnabled(false);
    if (UIWindow* const in = window()) in->popModalView(this);
    UIView::animate(
        menuFade, [&] { panel_->setAlpha(0); }, [kept](bool) { kept->removeFromSuperview(); });
}

void ContextMenu::touchesBegan(const UITouch&) { close(); }

bool ContextMenu::pressesBegan(const UIPress& press) {
    const std::size_t count = items_.size();
    switch (press.key.code) {
    case UIKeyCode::down: setHighlighted(highlighted_ ? (*highlighted_ + 1) % count : 0); break;
    case UIKeyCode::up: setHighlighted(highlighted_ ? (*highlighted_ + count - 1) % count : count - 1); break;
    case UIKeyCode::home: setHighlighted(0); break;
    case UIKeyCode::end: setHighlighted(count - 1); break;
    case UIKeyCode::enter:
    case UIKeyCode::space:
        if (highlighted_) choose(*highlighted_);
        break;
    case UIKeyCode::escape:
    case UIKeyCode::back:
    case UIKeyCode::menu:
    case UIKeyCode::tab: close(); break;
    default: break;
    }
    // The open menu uses every key, so that no view behind it gets one.
    return true;
}

}  // namespace ostrel
