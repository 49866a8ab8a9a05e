#pragma once

#include "article/media/ArticleMediaItem.h"
#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Data.h"
#include "platform/uikit/collection/UICollectionViewCell.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ostrel {

/// What the tiles of images and of videos share: a picture, an editor for its caption, and a button that removes the
/// item. The collection view reuses tiles; the strip sets style, shake and item each time. Kept on purpose: a thumbnail
/// that arrives after the tile was given another item still replaces the picture.
class MediaCollectionViewCell : public UICollectionViewCell, public UITextViewDelegate {
public:
    using UICollectionViewCell::UICollectionViewCell;
    void initialise();

    std::int64_t articleEditStyle() const { return articleEditStyle_; }
    /// 0: a small picture beside the caption; 1: the picture alone; any other number moves nothing.
    void setArticleEditStyle(std::int64_t style);
    /// Shakes the tile and hides its remove button, while the user reorders the items.
    void beginShake();
    void stopShake();
    void setImage(std::shared_ptr<const UIImage> image);
    /// The item's index, from 0, among `count` items, for the name that a screen reader says.
    void setPlace(std::size_t index, std::size_t count);
    /// Tells the strip that the remove button was pressed.
    virtual void remove() = 0;

    const std::shared_ptr<UIImageView>& img() const { return img_; }
    const std::shared_ptr<UIActivityIndicatorView>& actView() const { return actView_; }
    const std::shared_ptr<UITextView>& myTextView() const { return myTextView_; }
    /// Shows a hint while the caption is empty; it takes no touches.
    const std::shared_ptr<UITextField>& myTextPlaceholder() const { return myTextPlaceholder_; }
    const std::shared_ptr<UIButton>& removeButton() const { return removeButton_; }

    /// The item that the tile shows; null before the first.
    const ArticleMediaItem* shownItem() const { return item(); }

    void setFrame(const CGRect& frame) override;
    void textViewDidChange(UITextView& textView) override;
    void textViewDidEndEditing(UITextView& textView) override;

protected:
    /// What stops the spinner of an existing item: the answer to the thumbnail's request, or cached data as well.
    enum class Spinner { stopsWhenAnswered, stopsForCachedData };
    void showExisting(const Dictionary& record, bool isAnother, Spinner spinner);
    void showNew(std::shared_ptr<const UIImage> picture, const std::optional<std::string>& caption);
    /// Ends editing, so that the caption goes to the item that it was typed for. Call it before the tile shows another
    /// item.
    void endEditing();
    virtual ArticleMediaItem* item() const = 0;
    /// Tells the strip that the caption changed.
    virtual void captionDidChange() = 0;
    /// The keys of the looked-up texts for a screen reader: the tile without a caption, with one, and its remove
    /// button.
    virtual const char* nameKey() const = 0;
    virtual const char* captionedNameKey() const = 0;
    virtual const char* removeNameKey() const = 0;

private:
    void layoutForStyle();
    void showCaption(const std::string& text);
    void showData(const Data& data);
    /// Stores the caption in the item.
    void keepCaption(const std::string& text);
    void updateName();

    std::shared_ptr<NSBundle> myBundle_;
    std::shared_ptr<NSBundle> ostrelArticleBundle_;
    std::shared_ptr<UIImageView> img_;
    std::shared_ptr<UIActivityIndicatorView> actView_;
    std::shared_ptr<UITextView> myTextView_;
    std::shared_ptr<UITextField> myTextPlaceholder_;
    std::shared_ptr<UIButton> removeButton_;
    std::int64_t articleEditStyle_ = -1;
    std::size_t index_ = 0, count_ = 0;
    /// The bytes of the shown picture, so that the same bytes are not decoded again.
    Data shownData_;
};

/// What a strip hears from its tiles.
template <class Tile>
class MediaItemTileDelegate {
public:
    virtual ~MediaItemTileDelegate() = default;
    /// The remove button of the tile was pressed.
    virtual void removeImageCollectionViewCell(Tile&) {}
    /// The user changed the caption, or left its editor.
    virtual void textChangedCollectionViewCell(Tile&) {}
};

/// A tile with the item that it shows and its delegate. `Tile` is the class derived from this one.
template <class Tile, class Item>
class MediaItemTile : public MediaCollectionViewCell {
public:
    using Delegate = MediaItemTileDelegate<Tile>;
    using MediaCollectionViewCell::MediaCollectionViewCell;

    const std::shared_ptr<Delegate>& delegate() const { return delegate_; }
    /// The tile holds its delegate; the strip takes itself out when it closes.
    void setDelegate(std::shared_ptr<Delegate> delegate) { delegate_ = std::move(delegate); }
    void remove() override {
        const auto receiver = delegate_;
        if (receiver) receiver->removeImageCollectionViewCell(static_cast<Tile&>(*this));
    }

protected:
    const std::shared_ptr<Item>& itemObject() const { return item_; }
    /// Takes the item that the tile is about to show. Returns whether the item has changed.
    bool replaceItem(std::shared_ptr<Item> item) {
        const bool isAnother = item != item_;
        if (isAnother) endEditing();
        item_ = std::move(item);
        return isAnother;
    }
    ArticleMediaItem* item() const override { return item_.get(); }
    void captionDidChange() override {
        const auto receiver = delegate_;
        if (receiver) receiver->textChangedCollectionViewCell(static_cast<Tile&>(*this));
    }

private:
    std::shared_ptr<Item> item_;
    std::shared_ptr<Delegate> delegate_;
};

}  // namespace ostrel
