#pragma once

#include "platform/uikit/view/UIView.h"

namespace ostrel {

/// The spinning wheel for work of unknown length. The view is hidden while the wheel does not turn.
class UIActivityIndicatorView : public UIView {
public:
    enum class Style { medium, large };  ///< sides of 20 and 37 points
    explicit UIActivityIndicatorView(Style style = Style::medium);

    void startAnimating();
    void stopAnimating();
    bool isAnimating() const { return animating_; }
    void setColor(UIColor color);
    void setHidesWhenStopped(bool hides);

protected:
    ViewContent makeContent() const override;

private:
    bool animating_ = false;
    bool hidesWhenStopped_ = true;
    UIColor color_ = UIColor::rgb(0x8A8F99);
};

}  // namespace ostrel
