#pragma once

#include "platform/media/MediaThumbnails.h"
#include "platform/uikit/collection/UICollectionView.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/text/UILabel.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ostrel {

/// One picture or clip of the grid: its thumbnail, a clip's length, and whether it can be used or is being used.
class MediaTile final : public UICollectionViewCell {
public:
    explicit MediaTile(CGRect frame) : UICollectionViewCell(frame) {}
    void initialise();
    /// `position` counts from 1. Asks for the thumbnail; out of its grid the tile asks for nothing.
    void show(const MediaLibraryItem& item, std::size_t position, std::size_t count,
              const std::shared_ptr<MediaThumbnails>& thumbnails);
    void setBusy(bool isBusy);
    const std::string& path() const { return item_.path; }

    void layoutSubviews() override;
    void didMoveToSuperview() override;
    void touchesBegan(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;

private:
    void setThumbnail(const MediaThumbnail* thumbnail);
    void setPressed(bool isPressed);
    void describe();
    void updateShade();
    std::weak_ptr<MediaThumbnails> thumbnails_;
    MediaLibraryItem item_;
    std::size_t position_ = 0, count_ = 0;
    double duration_ = 0;
    bool isUsable_ = true, isBusy_ = false, isPressed_ = false;
    std::shared_ptr<UIImageView> picture_, symbol_;
    std::shared_ptr<UIView> shade_, badge_;
    std::shared_ptr<UILabel> length_;
    std::shared_ptr<UIActivityIndicatorView> wheel_;
};

/// A grid of media, as many squares beside each other as fit, with a view below them. Main thread.
class MediaGridView final : public UICollectionView,
                            public UICollectionViewDataSource,
                            public UICollectionViewDelegateFlowLayout {
public:
    static constexpr CGFloat gap = 2;
    /// Tiles are at least this wide, but for three on a narrow screen, points.
    static constexpr CGFloat leastTile = 116;

    explicit MediaGridView(std::shared_ptr<MediaThumbnails> thumbnails);
    void initialise();

    void setItems(std::vector<MediaLibraryItem> items);
    const std::vector<MediaLibraryItem>& items() const { return items_; }
    /// Below the tiles; as high as it is.
    void setFooterView(std::shared_ptr<UIView> footer);
    /// Shows a wheel on these.
    void setBusyPaths(std::set<std::string> paths);
    std::function<void(const MediaLibraryItem&)> chosen;

    std::int64_t collectionViewNumberOfItemsInSection(UICollectionView&, std::int64_t) override;
    std::shared_ptr<UICollectionViewCell> collectionViewCellForItemAtIndexPath(UICollectionView&,
                                                                               NSIndexPath path) override;
    void collectionViewDidSelectItemAtIndexPath(UICollectionView&, NSIndexPath path) override;
    void setFrame(const CGRect& frame) override;
    void layoutSubviews() override;
    /// An arrow goes to the first tile in sight when no tile has the focus.
    bool pressesBegan(const UIPress& press) override;

private:
    void adaptTiles();
    const std::shared_ptr<MediaThumbnails> thumbnails_;
    std::vector<MediaLibraryItem> items_;
    std::shared_ptr<UIView> footer_;
    std::set<std::string> busy_;
};

}  // namespace ostrel
