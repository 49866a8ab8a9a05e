#pragma once

#include "platform/uikit/collection/UICollectionViewCell.h"
#include "platform/uikit/controls/UIButton.h"

#include <memory>
#include <string>

namespace ostrel {

/// What the add tiles at the end of the strips share: a button that fills them.
class AddMediaCollectionViewCell : public UICollectionViewCell {
public:
    using UICollectionViewCell::UICollectionViewCell;
    void setFrame(const CGRect& frame) override;
    /// The focus is its button's.
    bool canBecomeFocused() const override { return false; }

protected:
    /// `picture` of the framework's bundle; `name` for screen readers.
    void makeButton(const char* picture, std::string name);
    virtual void addAction() = 0;
    const std::shared_ptr<UIButton>& button() const { return button_; }

private:
    std::shared_ptr<UIButton> button_;
};

class AddImageCollectionViewCell;

class AddImageCollectionViewCellDelegate {
public:
    virtual ~AddImageCollectionViewCellDelegate() = default;
    virtual void addImageFromAddImageCollectionViewCell(AddImageCollectionViewCell&) {}
};

/// The add tile of the image strip.
class AddImageCollectionViewCell final : public AddMediaCollectionViewCell {
public:
    using AddMediaCollectionViewCell::AddMediaCollectionViewCell;
    void initialise();

    const std::shared_ptr<AddImageCollectionViewCellDelegate>& delegate() const { return delegate_; }
    /// Held strongly; the strip takes itself out when it closes.
    void setDelegate(std::shared_ptr<AddImageCollectionViewCellDelegate> delegate);
    const std::shared_ptr<UIButton>& addImageButton() const { return button(); }
    void addImageAction();

protected:
    void addAction() override { addImageAction(); }

private:
    std::shared_ptr<AddImageCollectionViewCellDelegate> delegate_;
};

class AddVideoCollectionViewCell;

class AddVideoCollectionViewCellDelegate {
public:
    virtual ~AddVideoCollectionViewCellDelegate() = default;
    virtual void addVideoFromAddVideoCollectionViewCell(AddVideoCollectionViewCell&) {}
};

/// The add tile of the video strip.
class AddVideoCollectionViewCell final : public AddMediaCollectionViewCell {
public:
    using AddMediaCollectionViewCell::AddMediaCollectionViewCell;
    void initialise();

    const std::shared_ptr<AddVideoCollectionViewCellDelegate>& delegate() const { return delegate_; }
    /// Held strongly; the strip takes itself out when it closes.
    void setDelegate(std::shared_ptr<AddVideoCollectionViewCellDelegate> delegate);
    const std::shared_ptr<UIButton>& addVideoButton() const { return button(); }
    void addVideoAction();

protected:
    void addAction() override { addVideoAction(); }

private:
    std::shared_ptr<AddVideoCollectionViewCellDelegate> delegate_;
};

}  // namespace ostrel
