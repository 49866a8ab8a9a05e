#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/table/UITableViewCell.h"

namespace ostrel {

/// The last row of the article list while the server has a further page. The list requests that page when the
/// row is tapped, and gives the row its busy look until the page has come.
class UIArticleLoadMoreTableViewCell final : public UITableViewCell {
public:
    UIArticleLoadMoreTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    /// The busy look. One `stop` ends any number of calls.
    void start();
    /// The idle look.
    void stop();

    const std::shared_ptr<UIActivityIndicatorView>& actView() const { return actView_; }
    const std::shared_ptr<UILabel>& label() const { return label_; }
    void setFrame(const CGRect& frame) override;

private:
    void place();

    std::shared_ptr<UIActivityIndicatorView> actView_;
    std::shared_ptr<UILabel> label_;
};

}  // namespace ostrel
