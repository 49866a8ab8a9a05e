#pragma once

#include "platform/foundation/resources/NSBundle.h"
#include "platform/foundation/values/Data.h"
#include "platform/foundation/values/Value.h"
#include "platform/uikit/collection/UICollectionViewCell.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/text/UITextView.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// What the tiles of images and of videos share: a picture, an editor for its caption, and a button that removes it. Every
/// time a tile is handed an item it gets style, shake and item anew; a thumbnail that comes late still shows.
class MediaCollectionViewCell : public UICollectionViewCell, public UITextViewDelegate {
public:
    using UICollectionViewCell::UICollectionViewCell;
    void initialise();

    std::int64_t articleEditStyle() const { return articleEditStyle_; }
    /// 0: small picture beside the caption; 1: the picture alone; others leave everything where it is.
    void setArticleEditStyle(std::int64_t style);
    void beginShake();
    void stopShake();
    void setImage(std::shared_ptr<const UIImage> image);
    /// The item's place among `count`, from 0: what the tile says of itself to a screen reader.
    void setPlace(std::size_t index, std::size_t count);
    /// The remove button was pressed: the strip decides what that means.
    virtual void remove() = 0;

    const std::shared_ptr<UIImageView>& img() const { return img_; }
    const std::shared_ptr<UIActivityIndicatorView>& actView() const { return actView_; }
    const std::shared_ptr<UITextView>& myTextView() const { return myTextView_; }
    /// Shows what may be written while the caption is empty; nothing else.
    const std::shared_ptr<UITextField>& myTextPlaceholder() const { return myTextPlaceholder_; }
    const std::shared_ptr<UIButton>& removeButton() const { return removeButton_; }

    void setFrame(const CGRect& frame) override;
    void textViewDidChange(UITextView& textView) override;
    void textViewDidEndEditing(UITextView& textView) override;

protected:
    /// How the thumbnail of an existing item is waited for.
    enum class Wheel { turnsUntilAnswered, stopsForCachedData };
    /// To be called before another item is shown: a caption under edit goes to the item that it was typed for.
    void endEditing();
    void showExisting(const Dictionary& record, bool isAnother, Wheel wheel);
    void showNew(std::shared_ptr<const UIImage> picture, const std::optional<std::string>& caption);
    /// The caption's present text is the item's now.
    virtual void keepCaption(const std::string& text) = 0;
    /// Tells the strip.
    virtual void captionDidChange() = 0;
    /// Keys of the tile's name, without and with a caption.
    virtual const char* nameKey() const = 0;
    virtual const char* captionedNameKey() const = 0;
    virtual const char* removeNameKey() const = 0;

private:
    void layoutForStyle();
    void showCaption(const std::string& text);
    void showData(const Data& data);
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
    Data shownData_;  ///< the picture's bytes, so that the same bytes are not decoded twice
};

}  // namespace ostrel
