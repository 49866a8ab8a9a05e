#pragma once

#include "platform/foundation/values/NSIndexPath.h"
#include "platform/uikit/view/UIView.h"

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

class UIButton;

/// An action behind a row: shown by a swipe to the left, and in the context menu of a pointer or a long press.
struct UITableViewRowAction {
    enum class Style { normal, destructive };
    Style style = Style::normal;
    std::string title;
    std::function<void(NSIndexPath)> handler;
};

/// The buttons that a row swiped to the left uncovers. The first action is at the right edge, the next to its left.
class RowActionsView final : public UIView {
public:
    static constexpr CGFloat narrowestButton = 74;

    explicit RowActionsView(std::vector<UITableViewRowAction> actions) : actions_(std::move(actions)) {}
    void initialise();

    const std::vector<UITableViewRowAction>& actions() const { return actions_; }
    /// The width of all buttons, points.
    CGFloat width() const { return width_; }
    const std::vector<std::shared_ptr<UIButton>>& buttons() const { return buttons_; }
    /// Somebody pressed a button; its index among the actions.
    std::function<void(std::size_t)> chosen;

    void layoutSubviews() override;

private:
    std::vector<UITableViewRowAction> actions_;
    std::vector<std::shared_ptr<UIButton>> buttons_;
    std::vector<CGFloat> widths_;
    CGFloat width_ = 0;
};

}  // namespace ostrel
