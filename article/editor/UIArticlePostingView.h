#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"

#include <memory>

namespace ostrel {

/// The overlay that covers the window while an article is saved: a dark layer with a spinner in its middle. It is shown
/// and hidden by its alpha and stays in its superview; while it is shown, it keeps touches from the views below.
class UIArticlePostingView final : public UIView {
public:
    using UIView::UIView;
    void initialise();

    void startAnimated();
    void stopAnimated();
    const std::shared_ptr<UIActivityIndicatorView>& actView() const { return actView_; }

private:
    std::shared_ptr<UIActivityIndicatorView> actView_;
};

}  // namespace ostrel
