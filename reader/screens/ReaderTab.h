#pragma once

#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

#include <memory>
#include <string>

namespace ostrel {

/// One entry of the tabs: a symbol with a title below it in the bar, or beside it in the sidebar. Shows an embedder a
/// control of its own that follows the control states. Main thread.
class ReaderTab final : public UIControl {
public:
    /// The sides of the symbol, in points.
    static constexpr CGFloat symbolSize = 24;

    ReaderTab(std::shared_ptr<const UIImage> symbol, std::string title);
    void initialise();
    void setTitle(std::string title);
    const std::string& title() const { return title_; }
    /// Whether the title stands beside the symbol, as in the sidebar.
    void setBeside(bool beside);

    void layoutSubviews() override;
    void setFrame(const CGRect& frame) override;

protected:
    void controlStateDidChange() override;

private:
    void place();
    std::shared_ptr<const UIImage> symbol_;
    std::string title_;
    std::shared_ptr<UIImageView> image_;
    std::shared_ptr<UILabel> label_;
    bool beside_ = false;
};

}  // namespace ostrel
