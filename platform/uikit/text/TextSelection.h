#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/graphics/TextMeasurer.h"

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

/// What is selected of the text at rest of one view. A long press selects a word, and more while it moves; when it ends,
/// a menu offers to copy. A pointer selects by dragging where a drag does not scroll, a word by two presses, a paragraph by
/// three, and opens the menu with its secondary button. Command or Control with C copies, with A selects all of the text
/// that was pressed last. A window has one selection at most; a touch elsewhere ends it. Made by the view it belongs to,
/// which outlives it. Main thread.
class TextSelection final : public std::enable_shared_from_this<TextSelection> {
public:
    /// The text as it is laid out now.
    struct Layout {
        std::string_view text;  ///< empty: nothing can be selected
        TextLayout lines;
        CGPoint origin;  ///< of the lines' upper left corner, in the view
    };
    /// `didChange`: what is selected is another now.
    TextSelection(UIView& view, std::function<Layout()> layout, std::function<void()> didChange);
    ~TextSelection();
    void initialise();

    /// Bytes of the text; both equal when nothing is selected.
    std::size_t begin() const { return begin_; }
    std::size_t end() const { return end_; }
    bool isEmpty() const { return begin_ == end_; }
    void select(std::size_t begin, std::size_t end);
    void clear() { select(0, 0); }
    /// False when there is nothing to select.
    bool selectAll();
    /// Whether a long press selects; it does, unless the press means something else where the text stands.
    void setSelectsByPress(bool selects) { selectsByPress_ = selects; }
    /// Puts what is selected on the clipboard; false when that is nothing.
    bool copy() const;

    // Told by the view. True when the touch is used up and not the superview's.
    bool touchBegan(const UITouch& touch);
    void touchMoved(const UITouch& touch);
    const UIView& view() const { return view_; }

    /// The word of `text` around `offset`, or what stands there alone: an ideograph, a mark, a blank.
    static std::pair<std::size_t, std::size_t> wordAt(std::string_view text, std::size_t offset);
    /// The paragraph of `text` around `offset`, without the break that ends it.
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
    std::size_t anchorBegin_ = 0, anchorEnd_ = 0;  // where the selecting began
    Unit unit_ = Unit::character;                  // what a pointer that is dragged selects more of
    bool selectsByPress_ = true;
};

}  // namespace ostrel
