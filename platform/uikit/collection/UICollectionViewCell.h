#pragma once

#include "platform/uikit/view/UIView.h"

#include <memory>
#include <string>

namespace ostrel {

/// One item of a collection view: a surface that moves and is painted as a whole. Subviews go into `contentView`, which
/// is as large as the cell. The cell sets its accessible name itself (`setAccessibility`).
class UICollectionViewCell : public UIView {
public:
    explicit UICollectionViewCell(CGRect frame);

    const std::shared_ptr<UIView>& contentView() const { return contentView_; }
    /// The identifier that it was dequeued under.
    const std::string& reuseIdentifier() const { return reuseIdentifier_; }
    /// Called before the cell is handed out again.
    virtual void prepareForReuse() {}
    /// The Tab key and the arrows reach it while it is in a collection view. A cell that answers false leaves the focus
    /// to what is in it.
    bool canBecomeFocused() const override { return isInCollectionView_; }
    void focusDidChange(bool focused, bool byKeyboard) override;

private:
    friend class UICollectionView;
    std::shared_ptr<UIView> contentView_;
    std::string reuseIdentifier_;
    bool isInCollectionView_ = false;
    bool showsFocus_ = false;  ///< by a ring
    bool hasPlate_ = false;    ///< a background of its own only while it is lifted
};

}  // namespace ostrel
