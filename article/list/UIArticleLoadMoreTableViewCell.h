#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/table/UITableViewCell.h"

namespace ostrel {

/// The last row of the article list while the server has a further page: asks for it when tapped, and shows that it is
/// on its way.
class UIArticleLoadMoreTableViewCell final : public UITableViewCell {
public:
    UIArticleLoadMoreTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    /// The busy look. Calls do not nest: one `stop` ends any number of them.
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
