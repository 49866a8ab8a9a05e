#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/uikit/mounting/UIReturnKeyType.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ostrel {

/// A view whose text is edited by the backend's own editor. Told by the window what that editor reports. Main thread.
class TextInputClient {
public:
    virtual ~TextInputClient() = default;

    virtual void editorTextChanged(const std::string& text) = 0;
    virtual void editorFocusChanged(bool focused) = 0;
    /// Return was pressed; editors of many lines take it as text instead.
    virtual void editorReturn() = 0;
    /// The caret or the selection moved (UTF-16 units; a caret has no length), and the text under edit is `height` points
    /// high, without insets. After `editorTextChanged` when both changed.
    virtual void editorSelectionChanged(NSRange /*selection*/, CGFloat /*height*/) {}
};

/// The longest beginning of `text` (UTF-8) of at most `units` UTF-16 code units that ends between characters.
std::string_view prefixOfUtf16Length(std::string_view text, std::size_t units);
/// The UTF-16 code units of `text` (UTF-8).
std::size_t utf16Length(std::string_view text);

}  // namespace ostrel
