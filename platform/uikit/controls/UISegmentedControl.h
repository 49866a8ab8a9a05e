#pragma once

#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIControl.h"

namespace ostrel {

/// A row of titles of which one is selected. Sends valueChanged when the user selects another one; arrow keys
/// move the selection.
class UISegmentedControl : public UIControl {
public:
    explicit UISegmentedControl(std::vector<std::string> titles);
    void initialise();
    std::size_t selectedSegmentIndex() const { return selectedIndex_; }
    void setSelectedSegmentIndex(std::size_t index);
    std::size_t numberOfSegments() const { return titles_.size(); }
    CGSize sizeThatFits(CGSize size) const override;
    void layoutSubviews() override;
    void touchesEnded(const UITouch& touch) override;
    bool pressesBegan(const UIPress& press) override;

private:
    void choose(std::size_t index);
    void update();
    std::vector<std::string> titles_;
    std::vector<std::shared_ptr<UILabel>> labels_;
    std::shared_ptr<UIView> thumb_;
    std::size_t selectedIndex_ = 0;
};

}  // namespace ostrel
