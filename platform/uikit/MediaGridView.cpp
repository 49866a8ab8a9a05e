#include "platform/uikit/MediaGridView.h"

#include "platform/uikit/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace ostrel {

MediaGridLayout MediaGridLayout::forWidth(CGFloat width) {
    MediaGridLayout layout;
    layout.columns = std::max(3, static_cast<int>((width + gap) / (leastTile + gap)));
    layout.tile = std::max(1.0, (width - gap * (layout.columns - 1)) / layout.columns);
    return layout;
}

CGRect MediaGridLayout::frame(std::size_t index) const {
    const auto line = static_cast<CGFloat>(index / static_cast<std::size_t>(columns));
    const auto column = static_cast<CGFloat>(index % static_cast<std::size_t>(columns));
    // Edges on whole points, so that neighbours do not blur into each other.
    const CGFloat left = std::round(column * (tile + gap)), right = std::round(column * (tile + gap) + tile);
    const CGFloat height = std::round(tile);
    return {left, line * (height + gap), right - left, height};
}

CGFloat MediaGridLayout::height(std::size_t count) const { return count == 0 ? 0 : frame(count - 1).maxY(); }

MediaGridLayout::Range MediaGridLayout::tilesBetween(CGFloat top, CGFloat bottom, std::size_t count) const {
    const CGFloat line = std::round(tile) + gap;
    const auto lineAt = [&](CGFloat y) {
        return static_cast<std::size_t>(std::max(0.0, std::floor(y / line)));
    };
    const auto perLine = static_cast<std::size_t>(columns);
    return {std::min(count, lineAt(top) * perLine),
            bottom <= 0 ? 0 : std::min(count, (lineAt(bottom) + 1) * perLine)};
}

MediaGridView::MediaGridView(std::shared_ptr<MediaThumbnails> thumbnails)
    : thumbnails_(std::move(thumbnails)) {}

MediaGridView::~MediaGridView() = default;

void MediaGridView::setItems(std::vector<MediaLibraryItem> items) {
    recycleAll();
    items_ = std::move(items);
    lastFocused_ = 0;
    setNeedsLayout();
}

void MediaGridView::setFooterView(std::shared_ptr<UIView> footer) {
    if (footer_) footer_->removeFromSuperview();
    footer_ = std::move(footer);
    if (footer_) addSubview(footer_);
    setNeedsLayout();
}

void MediaGridView::setBusyPaths(std::set<std::string> paths) {
    busy_ = std::move(paths);
    for (const auto& [index, tile] : tiles_) tile->setBusy(busy_.contains(tile->path()));
}

void MediaGridView::setFrame(const CGRect& frame) {
    UIScrollView::setFrame(frame);
    setNeedsLayout();
}

void MediaGridView::layoutSubviews() {
    const CGFloat width = bounds().width();
    const MediaGridLayout wanted = MediaGridLayout::forWidth(width);
    if (wanted.columns != layout_.columns || wanted.tile != layout_.tile) {
        // What is at the top stays there.
        const auto top = layout_.tilesBetween(contentOffset().y, contentOffset().y + 1, items_.size()).first;
        const bool isScrolled = contentOffset().y > 0;
        layout_ = wanted;
        for (const auto& [index, tile] : tiles_) tile->setFrame(layout_.frame(index));
        if (isScrolled && top < items_.size()) setContentOffset({0, layout_.frame(top).minY()});
    }
    const CGFloat scale = window() && window()->backend() ? window()->backend()->scale() : 1;
    thumbnails_->setSide(static_cast<int>(std::ceil(layout_.tile * scale)));
    CGFloat height = layout_.height(items_.size());
    if (footer_) {
        footer_->setFrame({0, height, width, footer_->frame().height()});
        height += footer_->frame().height();
    }
    setContentSize({width, height});
    layoutTiles();
}

void MediaGridView::contentOffsetDidChange() {
    UIScrollView::contentOffsetDidChange();
    layoutTiles();
}

void MediaGridView::didMoveToWindow() {
    UIScrollView::didMoveToWindow();
    if (!window()) recycleAll();
    setNeedsLayout();
}

void MediaGridView::layoutTiles() {
    if (!window() || layout_.tile <= 0) return;
    const CGFloat top = contentOffset().y;
    const auto range =
        layout_.tilesBetween(top - overscan, top + bounds().height() + overscan, items_.size());
    std::vector<std::size_t> leaving;
    for (const auto& [index, tile] : tiles_) {
        if (index < range.first || index >= range.end) leaving.push_back(index);
    }
    for (const std::size_t index : leaving) recycle(index);
    // From the end: what is asked for last is made first, and the first in sight are looked at first.
    for (std::size_t index = range.end; index-- > range.first;) {
        if (!tiles_.contains(index)) showTile(index);
    }
}

void MediaGridView::showTile(std::size_t index) {
    std::shared_ptr<MediaTile> tile;
    if (unused_.empty()) {
        tile = make<MediaTile>();
        tile->addTarget(
            [this, weak = std::weak_ptr(tile)] {
                const auto pressed = weak.lock();
                if (!pressed || !chosen) return;
                const auto shown =
                    std::ranges::find(tiles_, pressed, [](const auto& entry) { return entry.second; });
                if (shown != tiles_.end()) chosen(MediaLibraryItem(items_[shown->first]));
            },
            UIControlEvent::touchUpInside);
    } else {
        tile = std::move(unused_.back());
        unused_.pop_back();
    }
    const MediaLibraryItem& item = items_[index];
    tiles_[index] = tile;
    tile->setFrame(layout_.frame(index));
    tile->show(item, index + 1, items_.size());
    tile->setBusy(busy_.contains(item.path));
    insertSubview(tile, 0);
    if (const MediaThumbnail* thumbnail = thumbnails_->find(item.path)) return tile->setThumbnail(thumbnail);
    thumbnails_->request(item,
                         [weak = std::weak_ptr(tile), path = item.path](const MediaThumbnail& thumbnail) {
                             const auto shown = weak.lock();
                             if (shown && shown->superview() && shown->path() == path)
                                 shown->setThumbnail(&thumbnail);
                         });
}

void MediaGridView::recycle(std::size_t index) {
    const auto found = tiles_.find(index);
    const auto tile = std::move(found->second);
    tiles_.erase(found);
    thumbnails_->forget(tile->path());
    tile->removeFromSuperview();
    constexpr std::size_t mostUnused = 48;
    if (unused_.size() < mostUnused) unused_.push_back(tile);
}

void MediaGridView::recycleAll() {
    while (!tiles_.empty()) recycle(tiles_.begin()->first);
}

std::optional<std::size_t> MediaGridView::focusedIndex() const {
    const UIView* const focused = window() ? window()->focusedView() : nullptr;
    for (const auto& [index, tile] : tiles_) {
        if (tile.get() == focused) return index;
    }
    return std::nullopt;
}

void MediaGridView::focus(std::size_t index) {
    lastFocused_ = index;
    // At once: the tile has to exist to have the focus.
    const CGRect frame = layout_.frame(index);
    const CGFloat top = contentOffset().y, height = bounds().height();
    if (frame.minY() < top) setContentOffset({0, std::max(0.0, frame.minY())});
    if (frame.maxY() > top + height) setContentOffset({0, frame.maxY() - height});
    layoutTiles();
    const auto tile = tiles_.find(index);
    if (tile != tiles_.end() && window()) window()->setFocusedView(tile->second.get(), true);
}

bool MediaGridView::pressesBegan(const UIPress& press) {
    const auto code = press.key.code;
    const bool isArrow = code == UIKeyCode::left || code == UIKeyCode::right || code == UIKeyCode::up ||
                         code == UIKeyCode::down;
    if (!isArrow || press.key.modifiers != modifierNone || items_.empty())
        return UIScrollView::pressesBegan(press);
    const auto present = focusedIndex();
    if (!present) {
        focus(std::min(lastFocused_, items_.size() - 1));
        return true;
    }
    const auto columns = static_cast<std::size_t>(layout_.columns);
    std::size_t next = *present;
    if (code == UIKeyCode::left && next > 0) --next;
    if (code == UIKeyCode::right && next + 1 < items_.size()) ++next;
    if (code == UIKeyCode::up && next >= columns) next -= columns;
    // The last line may be shorter.
    const bool hasLineBelow = next / columns < (items_.size() - 1) / columns;
    if (code == UIKeyCode::down && hasLineBelow) next = std::min(next + columns, items_.size() - 1);
    focus(next);
    return true;
}

}  // namespace ostrel
