#pragma once

#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/screens/UIBarButtonItem.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The contents of a navigation bar for one screen: title, back button and the screen's items. A bar has two of them
/// while it changes from one screen to the next.
class NavigationBarContents final : public UIView {
public:
    struct Description {
        std::string title;
        std::optional<std::string> back;  ///< absent: no back button
        std::shared_ptr<UIView> titleView;
        std::shared_ptr<UIBarButtonItem> left, right;
    };

    NavigationBarContents(Description description, UIColor tint, std::function<void()> goBack);
    void initialise();

    /// Updates the views for a description with the same items; false when the description needs other views.
    bool update(const Description& description);
    /// 0: at rest; 1 or -1: faded out to the right or left, where the contents enter or leave.
    void setDisplacement(double displacement);
    void layoutSubviews() override;

private:
    std::shared_ptr<UIButton> buttonFor(const std::shared_ptr<UIBarButtonItem>& item) const;
    void refresh();

    Description description_;
    UIColor tint_;
    std::function<void()> goBack_;
    std::shared_ptr<UILabel> title_;
    std::shared_ptr<UIButton> back_, left_, right_;
};

}  // namespace ostrel
