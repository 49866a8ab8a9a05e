#pragma once

#include "article/editor/UIArticleEditMediaTableViewCell.h"
#include "article/media/ArticleMediaItem.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace ostrel {

/// A strip with its items, its tiles and its delegate: what the strips of images and of videos share, typed by their
/// classes. `Strip` is the class derived from this one.
template <class Strip, class Item, class Tile, class AddTile, class StripDelegate>
class MediaStrip : public UIArticleEditMediaTableViewCell, public Tile::Delegate, public AddTile::Delegate {
public:
    using Items = std::vector<std::shared_ptr<Item>>;
    using UIArticleEditMediaTableViewCell::UIArticleEditMediaTableViewCell;

    void initialise() {
        UIArticleEditMediaTableViewCell::initialise();
        collectionView()->template registerClassForCellWithReuseIdentifier<Tile>(itemIdentifier);
        collectionView()->template registerClassForCellWithReuseIdentifier<AddTile>(addIdentifier);
    }

    /// The height in points that a strip of these items needs. Absent items count as none.
    static CGFloat heightFor(const std::optional<Items>& items, std::int64_t style) {
        return heightForCount(items ? items->size() : 0, style);
    }
    /// The items in display order; absent until they are set.
    const std::optional<Items>& items() const { return items_; }
    /// The records of the existing items that the user removed; absent until the first removal.
    const std::optional<std::vector<Dictionary>>& removedRecords() const { return removedRecords_; }

    const std::shared_ptr<StripDelegate>& delegate() const { return delegate_; }
    /// The strip holds its delegate. A delegate that holds the strip calls `setDelegate(nullptr)` when it closes.
    void setDelegate(std::shared_ptr<StripDelegate> delegate) { delegate_ = std::move(delegate); }

    void removeImageCollectionViewCell(Tile& tile) override { removeItemOf(tile); }
    void textChangedCollectionViewCell(Tile&) override { tellTextAndValueChanged(); }

protected:
    /// Before the strip is first shown.
    void setItems(Items items) { items_ = std::move(items); }
    /// Adds an item at the end, with its tile.
    void append(std::shared_ptr<Item> item) {
        if (!items_) items_.emplace();
        items_->push_back(std::move(item));
        insertLastTile();
    }
    std::weak_ptr<Strip> weakStrip() { return std::static_pointer_cast<Strip>(shared_from_this()); }

    virtual void show(const std::shared_ptr<Item>& item, Tile& tile) = 0;

    std::optional<std::size_t> itemCount() const override {
        return items_ ? std::optional(items_->size()) : std::nullopt;
    }
    std::shared_ptr<UICollectionViewCell> addImageCellWithIndexPath(NSIndexPath path) override {
        return dequeue<AddTile>(addIdentifier, path);
    }
    std::shared_ptr<MediaCollectionViewCell> itemTile(NSIndexPath path) override {
        return dequeue<Tile>(itemIdentifier, path);
    }
    void showItem(MediaCollectionViewCell& tile, std::size_t index) override {
        show((*items_)[index], static_cast<Tile&>(tile));
    }
    void swapItems(std::size_t one, std::size_t other) override { std::swap((*items_)[one], (*items_)[other]); }
    void eraseItem(std::size_t index) override { items_->erase(items_->begin() + static_cast<std::ptrdiff_t>(index)); }
    void rememberRemoved(const Dictionary& record) override {
        if (!removedRecords_) removedRecords_.emplace();
        removedRecords_->push_back(record);
    }
    void releaseTile(UICollectionViewCell& tile) override {
        if (auto* const item = dynamic_cast<Tile*>(&tile)) item->setDelegate(nullptr);
        if (auto* const add = dynamic_cast<AddTile*>(&tile)) add->setDelegate(nullptr);
    }

private:
    static constexpr char itemIdentifier[] = "cell", addIdentifier[] = "add";

    /// A tile with this strip as its delegate.
    template <class AnyTile>
    std::shared_ptr<AnyTile> dequeue(const char* identifier, NSIndexPath path) {
        auto tile = std::static_pointer_cast<AnyTile>(
            collectionView()->dequeueReusableCellWithReuseIdentifierForIndexPath(identifier, path));
        tile->setDelegate(weakStrip().lock());
        return tile;
    }

    std::optional<Items> items_;
    std::optional<std::vector<Dictionary>> removedRecords_;
    std::shared_ptr<StripDelegate> delegate_;
};

}  // namespace ostrel
