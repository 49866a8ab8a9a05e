#pragma once

#include "platform/media/MediaThumbnails.h"
#include "platform/uikit/UIActivityIndicatorView.h"
#include "platform/uikit/UIControl.h"
#include "platform/uikit/UIImageView.h"
#include "platform/uikit/UILabel.h"
#include "platform/uikit/UIScrollView.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace ostrel {

/// Where the tiles of a grid of squares lie. A pure value.
struct MediaGridLayout {
    static constexpr CGFloat gap = 2;
    /// Tiles are at least this wide, but for three on a narrow screen.
    static constexpr CGFloat leastTile = 116;

    int columns = 3;
    CGFloat tile = 0;

    static MediaGridLayout forWidth(CGFloat width);
    CGRect frame(std::size_t index) const;
    CGFloat height(std::size_t count) const;
    struct Range {
        std::size_t first = 0, end = 0;
    };
    /// The tiles of the lines that reach into `top` to `bottom`.
    Range tilesBetween(CGFloat top, CGFloat bottom, std::size_t count) const;
};

/// One picture or clip of the grid: its thumbnail, a clip's length, and whether it can be used or is being used.
class MediaTile final : public UIControl {
public:
    MediaTile();
    void initialise();
    /// `position` counts from 1.
    void show(const MediaLibraryItem& item, std::size_t position, std::size_t count);
    void setThumbnail(const MediaThumbnail* thumbnail);
    void setBusy(bool isBusy);
    const std::string& path() const { return item_.path; }
    bool isUsable() const { return isUsable_; }
    void layoutSubviews() override;

protected:
    void controlStateDidChange() override;

private:
    void describe();
    MediaLibraryItem item_;
    std::size_t position_ = 0, count_ = 0;
    double duration_ = 0;
    bool isUsable_ = true, isBusy_ = false;
    std::shared_ptr<UIImageView> picture_, symbol_;
    std::shared_ptr<UIView> shade_, badge_;
    std::shared_ptr<UILabel> length_;
    std::shared_ptr<UIActivityIndicatorView> wheel_;
};

/// A grid of media, of which only those near the screen exist as tiles. Arrows go from tile to tile, Return and the space
/// bar choose. Main thread.
class MediaGridView final : public UIScrollView {
public:
    /// Tiles are made this far beyond the edges, points.
    static constexpr CGFloat overscan = 200;

    explicit MediaGridView(std::shared_ptr<MediaThumbnails> thumbnails);
    ~MediaGridView() override;

    /// Keeps the offset.
    void setItems(std::vector<MediaLibraryItem> items);
    const std::vector<MediaLibraryItem>& items() const { return items_; }
    /// Below the tiles; as high as it is.
    void setFooterView(std::shared_ptr<UIView> footer);
    /// Shows a wheel on these.
    void setBusyPaths(std::set<std::string> paths);
    std::function<void(const MediaLibraryItem&)> chosen;

    void setFrame(const CGRect& frame) override;
    void layoutSubviews() override;
    void didMoveToWindow() override;
    bool pressesBegan(const UIPress& press) override;
    std::size_t liveTileCount() const { return tiles_.size() + unused_.size(); }

protected:
    void contentOffsetDidChange() override;
    bool alwaysBounces() const override { return true; }

private:
    void layoutTiles();
    void showTile(std::size_t index);
    void recycle(std::size_t index);
    void recycleAll();
    std::optional<std::size_t> focusedIndex() const;
    void focus(std::size_t index);

    std::shared_ptr<MediaThumbnails> thumbnails_;
    std::vector<MediaLibraryItem> items_;
    MediaGridLayout layout_;
    std::map<std::size_t, std::shared_ptr<MediaTile>> tiles_;
    std::vector<std::shared_ptr<MediaTile>> unused_;
    std::shared_ptr<UIView> footer_;
    std::set<std::string> busy_;
    std::size_t lastFocused_ = 0;
};

}  // namespace ostrel
