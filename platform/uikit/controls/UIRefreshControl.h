#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

namespace ostrel {

/// The wheel above a table that a pull uncovers; sends valueChanged when the pull went far enough. Its table shows it;
/// height 60 points. While refreshing the table stays moved down by that height once the finger has left.
class UIRefreshControl : public UIControl {
public:
    UIRefreshControl();
    ~UIRefreshControl() override;
    void initialise();

    /// Colour of the wheel.
    void setTintColor(UIColor color);
    UIColor tintColor() const { return tint_; }
    /// The plain text of the title.
    void setAttributedTitle(std::string title);
    const std::string& attributedTitle() const;
    bool isRefreshing() const { return refreshing_; }
    /// Does not move the table: whoever calls it scrolls, when the wheel is to be seen.
    void beginRefreshing();
    void endRefreshing();
    /// Points.
    static constexpr CGFloat height = 60;
    /// How far it is pulled, 0 to 1; set by the table.
    void setPullProgress(CGFloat progress);
    bool canBecomeFocused() const override { return false; }
    void layoutSubviews() override;

    /// Set by the table: told when refreshing begins or ends.
    std::function<void()> refreshingDidChange;

private:
    bool refreshing_ = false;
    UIColor tint_ = UIColor::darkGray();
    class Wheel;
    std::shared_ptr<Wheel> wheel_;
    std::shared_ptr<UILabel> title_;
};

}  // namespace ostrel
