#include "platform/uikit/collection/UICollectionViewCell.h"

#include "platform/foundation/values/Object.h"

namespace ostrel {

UICollectionViewCell::UICollectionViewCell(CGRect frame)
    : UIView(frame), contentView_(make<UIView>(CGRect({}, frame.size))) {
    setSurface(true);
    setDefaultAccessibility(AccessibilityRole::listItem, {});
    contentView_->setAutoresizingMask(flexibleWidth | flexibleHeight);
    addSubview(contentView_);
}

void UICollectionViewCell::focusDidChange(bool focused, bool byKeyboard) {
    showsFocus_ = focused && byKeyboard;
    UIView::focusDidChange(focused, byKeyboard);
}

}  // namespace ostrel
