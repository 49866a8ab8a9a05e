#pragma once

#include "platform/media/MediaThumbnails.h"
#include "platform/uikit/collection/UICollectionViewCell.h"
#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/text/UILabel.h"

#include <cstddef>
#include <memory>
#include <string>

namespace ostrel {

/// One picture or clip of the grid: its thumbnail, a clip's length, and whether it can be used or is being used.
class MediaGridCell final : public UICollectionViewCell {
public:
    explicit MediaGridCell(CGRect frame) : UICollectionViewCell(frame) {}
    void initialise();
    /// `position` counts from 1. Asks for the thumbnail; outside of a grid the cell asks for none.
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

}  // namespace ostrel
