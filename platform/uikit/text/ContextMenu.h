#pragma once

#include "platform/uikit/view/UIView.h"

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

/// A small panel of actions at a point of a window, in front of all other views. Up, Down, Home and End move
/// the highlight, Return and Space run an action; Escape, a press beside the panel and a resize of the window
/// close it. A window has at most one open menu.
class ContextMenu final : public UIView {
public:
    struct Item {
        std::string title;
        bool isDestructive = false;
        std::function<void()> action;
    };
    enum class Highlight { none, first };  ///< first: for a menu that a key has opened

    /// Opens a menu near `point` (in the window), within the window's bounds; null without items.
    static std::shared_ptr<ContextMenu> show(UIWindow& window, CGPoint point, std::vector<Item> items,
                                             Highlight highlight = Highlight::none);
    /// The upper left corner of a panel of `size` opened at `point`: below and to the right of the point
    /// where there is room.
    static CGPoint panelOrigin(CGPoint point, CGSize size, CGRect bounds);

    explicit ContextMenu(std::vector<Item> items) : items_(std::move(items)) {}
    ~ContextMenu() override;

    /// A second call does nothing.
    void close();
    const std::shared_ptr<UIView>& panel() const { return panel_; }
    std::optional<std::size_t> highlightedItem() const { return highlighted_; }

    bool canBecomeFirstResponder() const override { return true; }
    bool pressesBegan(const UIPress& press) override;
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch&) override {}
    void touchesEnded(const UITouch&) override {}
    void touchesCancelled(const UITouch&) override {}
    /// Uses every scroll, so that no view behind an open menu scrolls.
    bool scrollBy(const UIScrollEvent&) override { return true; }
    void setFrame(const CGRect& frame) override;

private:
    class Row;
    void build(CGPoint point, const CGRect& bounds);
    void setHighlighted(std::optional<std::size_t> index);
    void choose(std::size_t index);

    std::vector<Item> items_;
    std::vector<std::shared_ptr<Row>> rows_;
    std::shared_ptr<UIView> panel_;
    std::optional<std::size_t> highlighted_;
    bool isOpen_ = false;
};

}  // namespace ostrel
