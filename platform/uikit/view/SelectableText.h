#pragma once

namespace ostrel {

class UIView;

/// Text at rest of which a part can be selected, as far as a window knows it: the window sends it the keys
/// that copy and select, and ends one selection when another begins. Main thread.
class SelectableText {
public:
    virtual ~SelectableText() = default;
    /// The view that shows the text.
    virtual const UIView& view() const = 0;
    /// Puts the selected text on the clipboard; false when no text is selected.
    virtual bool copy() const = 0;
    /// False when the text is empty.
    virtual bool selectAll() = 0;
    virtual void clear() = 0;
};

}  // namespace ostrel
