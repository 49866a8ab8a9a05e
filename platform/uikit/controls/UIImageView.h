#pragma once

#include "platform/uikit/view/UIView.h"

namespace ostrel {

/// Shows a picture; empty while it has no image.
class UIImageView : public UIView {
public:
    /// User interaction is disabled by default.
    explicit UIImageView(CGRect frame = {});

    const std::shared_ptr<const UIImage>& image() const { return content_.image; }
    void setImage(std::shared_ptr<const UIImage> image);
    UIViewContentMode contentMode() const { return content_.contentMode; }
    void setContentMode(UIViewContentMode mode);
    void setTintColor(UIColor color);
    CGSize sizeThatFits(CGSize size) const override;

protected:
    ViewContent makeContent() const override;

private:
    ImageContent content_{.contentMode = UIViewContentMode::scaleToFill, .tint = UIColor::tint()};
};

}  // namespace ostrel
