#pragma once

#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UILabel.h"
#include "serverframework/account/UserNotification.h"

#include <memory>

namespace ostrel {

/// A row of the messages: who wrote, when, and what; a dot marks a message that is new. Shows an embedder a cell whose
/// height is computed from its content before the cell exists. Main thread.
class ReaderMessageCell final : public UITableViewCell {
public:
    using UITableViewCell::UITableViewCell;
    void initialise();
    void show(const UserNotification& message);
    /// The height of the message's row, in points.
    static CGFloat heightFor(const UserNotification& message, CGFloat rowWidth);

    void layoutSubviews() override;

private:
    std::shared_ptr<UILabel> addLabel(const UIFont& font, UIColor color);
    std::shared_ptr<UIView> dot_;
    std::shared_ptr<UILabel> sender_, date_, title_, text_;
};

}  // namespace ostrel
