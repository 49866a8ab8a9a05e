#pragma once

#include "platform/uikit/table/UITableViewCell.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

/// The title of an article on one centred line. A long press runs the handler. The table sets the row's
/// height.
class UIArticleViewTitleTableViewCell final : public UITableViewCell {
public:
    UIArticleViewTitleTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const std::string& title() const { return title_; }
    void setTitle(std::string title);
    const std::function<void()>& longPressHandler() const { return longPressHandler_; }
    void setLongPressHandler(std::function<void()> handler) { longPressHandler_ = std::move(handler); }

    const std::shared_ptr<UILabel>& titleLabel() const { return titleLabel_; }

private:
    void longpress();

    std::string title_;
    std::shared_ptr<UILabel> titleLabel_;
    std::function<void()> longPressHandler_;
};

}  // namespace ostrel
