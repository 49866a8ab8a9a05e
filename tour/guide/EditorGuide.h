#pragma once

#include "tour/guide/TourGuide.h"

#include <cstddef>
#include <string>

namespace ostrel {

class UIArticleEditMediaTableViewCell;
class UIArticleEditViewController;
class UICollectionViewCell;

/// What a part of the tour needs to write an article: what the editor shows, and what a person does with it. The editor
/// is on top of the user's own list. Main thread.
class EditorGuide : public TourGuide {
protected:
    using TourGuide::TourGuide;
    ~EditorGuide() = default;

    enum class Strip { images, videos };

    /// The editor on top; null when another screen is.
    UIArticleEditViewController* editor();
    /// Null unless an editor is on top.
    UIArticleEditMediaTableViewCell* strip(Strip kind);
    std::size_t itemCount(Strip kind);
    /// Scrolls the editor until this tile of the strip is wholly on screen; null when no scrolling brings it there.
    UICollectionViewCell* tile(Strip kind, std::size_t index);

    /// Adds the picture or clip with this file name through the picker.
    void pick(Strip kind, const std::string& file);
    /// Types the caption of a picture.
    void caption(std::size_t index, const std::string& text);
    /// Removes a picture by its badge.
    void remove(std::size_t index);
    /// A long press, after which the tiles shake and can be dragged.
    void startReordering();
    /// A scroll, after which the tiles are at rest.
    void endReordering();
    /// Drags a picture to the place of another.
    void swap(std::size_t from, std::size_t to);
    /// Presses "POST" and waits until all is sent.
    void post();
};

}  // namespace ostrel
