#pragma once

#include "platform/media/MediaThumbnails.h"
#include "platform/uikit/collection/UICollectionView.h"
#include "platform/uikit/collection/UICollectionViewFlowLayout.h"

#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace ostrel {

/// A grid of media, as many squares beside each other as fit, with a view below them. Main thread.
class MediaGridView final : public UICollectionView,
                            public UICollectionViewDataSource,
                            public UICollectionViewDelegateFlowLayout {
public:
    static constexpr CGFloat gap = 2;
    /// The least width of a cell, points; a narrow screen has three columns of narrower cells.
    static constexpr CGFloat leastCellWidth = 116;

    explicit MediaGridView(std::shared_ptr<MediaThumbnails> thumbnails);
    void initialise();

    void setItems(std::vector<MediaLibraryItem> items);
    const std::vector<MediaLibraryItem>& items() const { return items_; }
    /// A view below the cells; its own height is kept.
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
    /// An arrow key moves the focus to the first visible cell when no cell has the focus.
    bool pressesBegan(const UIPress& press) override;

private:
    void adaptCellSize();
    const std::shared_ptr<MediaThumbnails> thumbnails_;
    std::vector<MediaLibraryItem> items_;
    std::shared_ptr<UIView> footer_;
    std::set<std::string> busy_;
};

}  // namespace ostrel
