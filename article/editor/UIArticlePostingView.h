#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"

#include <memory>

namespace ostrel {

/// What lies over the whole window while an article is saved: a dark veil with a wheel in its middle. Shown and hidden by
/// its alpha, never removed; while it is shown it keeps touches from what lies beneath.
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
