#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/graphics/TextMeasurer.h"
#include "platform/uikit/view/SelectableText.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace ostrel {

class UIGestureRecognizer;
class UIView;
struct UITouch;

/// The selected part of the text at rest of one view. A long press selects a word, and extends the selection
/// while it moves; when the press ends, a menu offers to copy. A pointer selects by dragging where a drag
/// does not scroll, a word by two presses, a paragraph by three, and opens the menu with its secondary
/// button. Command or Control with C copies, with A selects the whole text that was pressed last. A window
/// has at most one selection; a touch elsewhere clears it. Owned by its view. Main thread.
class TextSelection final : public SelectableText, public std::enable_shared_from_this<TextSelection> {
public:
    /// The text as it is laid out now.
    struct Layout {
        std::string_view text;  ///< empty: there is no text to select
        TextLayout lines;
        CGPoint origin;  ///< the upper left corner of the lines, in the view
    };
    /// `didChange` is called after every change of the selection.
    TextSelection(UIView& view, std::function<Layout()> layout, std::function<void()> didChange);
    ~TextSelection() override;
    void initialise();

    /// Byte offsets in the text; equal when the selection is empty.
    std::size_t begin() const { return begin_; }
    std::size_t end() const { return end_; }
    bool isEmpty() const { return begin_ == end_; }
    void select(std::size_t begin, std::size_t end);
    void clear() override { select(0, 0); }
    bool selectAll() override;
    /// Whether a long press selects (the default). False where the surrounding view handles long presses.
    void setSelectsByPress(bool selects) { selectsByPress_ = selects; }
    bool copy() const override;

    // Called by the view. True when the selection has used the touch, so that the superview must not get it.
    bool touchBegan(const UITouch& touch);
    void touchMoved(const UITouch& touch);
    const UIView& view() const override { return view_; }

    /// The word of `text` around `offset`, as a range of bytes. A run of blanks, a single ideograph and a
    /// single mark count as words.
    static std::pair<std::size_t, std::size_t> wordAt(std::string_view text, std::size_t offset);
    /// The paragraph of `text` around `offset`, as a range of bytes without the line break that ends it.
    static std::pair<std::size_t, std::size_t> paragraphAt(std::string_view text, std::size_t offset);

private:
    enum class Unit { character, word, paragraph };
    std::pair<std::size_t, std::size_t> unitAt(CGPoint pointInWindow) const;
    void pressed(UIGestureRecognizer& press);
    bool openMenu(CGPoint pointInWindow);
    std::size_t offsetAt(CGPoint pointInWindow) const;

    UIView& view_;
    const std::function<Layout()> layout_;
    const std::function<void()> didChange_;
    std::shared_ptr<UIGestureRecognizer> press_;
    std::size_t begin_ = 0, end_ = 0;
    std::size_t anchorBegin_ = 0, anchorEnd_ = 0;  // the part that the first press selected
    Unit unit_ = Unit::character;                  // by which a drag of the pointer extends the selection
    bool selectsByPress_ = true;
};

}  // namespace ostrel
