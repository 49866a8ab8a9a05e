#pragma once

#include "platform/uikit/collection/UICollectionViewCell.h"
#include "platform/uikit/controls/UIButton.h"

#include <memory>
#include <string>
#include <utility>

namespace ostrel {

/// What the add tiles at the end of the strips share: a button that fills the tile.
class AddMediaCollectionViewCell : public UICollectionViewCell {
public:
    using UICollectionViewCell::UICollectionViewCell;
    void setFrame(const CGRect& frame) override;
    /// No: the tile's button takes the focus.
    bool canBecomeFocused() const override { return false; }

protected:
    /// `picture`: its name in the framework's bundle; `name`: what a screen reader says.
    void makeButton(const char* picture, std::string name);
    virtual void addAction() = 0;
    const std::shared_ptr<UIButton>& button() const { return button_; }

private:
    std::shared_ptr<UIButton> button_;
};

/// An add tile with its delegate.
template <class TileDelegate>
class AddMediaTile : public AddMediaCollectionViewCell {
public:
    using Delegate = TileDelegate;
    using AddMediaCollectionViewCell::AddMediaCollectionViewCell;

    const std::shared_ptr<Delegate>& delegate() const { return delegate_; }
    /// The tile holds its delegate; the strip takes itself out when it closes.
    void setDelegate(std::shared_ptr<Delegate> delegate) { delegate_ = std::move(delegate); }

private:
    std::shared_ptr<Delegate> delegate_;
};

class AddImageCollectionViewCell;
class AddVideoCollectionViewCell;

class AddImageCollectionViewCellDelegate {
public:
    virtual ~AddImageCollectionViewCellDelegate() = default;
    virtual void addImageFromAddImageCollectionViewCell(AddImageCollectionViewCell&) {}
};

class AddVideoCollectionViewCellDelegate {
public:
    virtual ~AddVideoCollectionViewCellDelegate() = default;
    virtual void addVideoFromAddVideoCollectionViewCell(AddVideoCollectionViewCell&) {}
};

/// The add tile of the image strip.
class AddImageCollectionViewCell final : public AddMediaTile<AddImageCollectionViewCellDelegate> {
public:
    using AddMediaTile::AddMediaTile;
    void initialise();

    const std::shared_ptr<UIButton>& addImageButton() const { return button(); }
    void addImageAction();

protected:
    void addAction() override { addImageAction(); }
};

/// The add tile of the video strip.
class AddVideoCollectionViewCell final : public AddMediaTile<AddVideoCollectionViewCellDelegate> {
public:
    using AddMediaTile::AddMediaTile;
    void initialise();

    const std::shared_ptr<UIButton>& addVideoButton() const { return button(); }
    void addVideoAction();

protected:
    void addAction() override { addVideoAction(); }
};

}  // namespace ostrel
