#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

namespace ostrel {

/// The wheel above a table that a pull uncovers. Sends valueChanged when the pull has gone far enough. The
/// table shows it and, once the finger has left, keeps its content moved down by `height` until the refresh
/// ends.
class UIRefreshControl : public UIControl {
public:
    UIRefreshControl();
    ~UIRefreshControl() override;
    void initialise();

    /// The colour of the wheel.
    void setTintColor(UIColor color);
    UIColor tintColor() const { return tint_; }
    /// The title, as plain text.
    void setAttributedTitle(std::string title);
    const std::string& attributedTitle() const;
    bool isRefreshing() const { return refreshing_; }
    /// Does not scroll the table: a caller that wants the wheel to be visible scrolls to it.
    void beginRefreshing();
    void endRefreshing();
    /// Points.
    static constexpr CGFloat height = 60;
    /// The progress of the pull, 0 to 1; set by the table.
    void setPullProgress(CGFloat progress);
    bool canBecomeFocused() const override { return false; }
    void layoutSubviews() override;

    /// Called when refreshing begins or ends; set by the table.
    std::function<void()> refreshingDidChange;

private:
    bool refreshing_ = false;
    UIColor tint_ = UIColor::darkGray();
    class Wheel;
    std::shared_ptr<Wheel> wheel_;
    std::shared_ptr<UILabel> title_;
};

}  // namespace ostrel
