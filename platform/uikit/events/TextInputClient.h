#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/uikit/mounting/UIReturnKeyType.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace ostrel {

/// A view whose text is edited by the backend's own editor. The window passes on what the editor reports.
/// Main thread.
class TextInputClient {
public:
    virtual ~TextInputClient() = default;

    virtual void editorTextChanged(const std::string& text) = 0;
    virtual void editorFocusChanged(bool focused) = 0;
    /// Return was pressed in an editor of one line. An editor of many lines inserts a line break instead.
    virtual void editorReturn() = 0;
    /// The caret or the selection moved, in UTF-16 units (a caret has length 0). The text under edit is
    /// `height` points high, without insets. Called after `editorTextChanged` when both changed.
    virtual void editorSelectionChanged(NSRange /*selection*/, CGFloat /*height*/) {}
};

/// The longest prefix of `text` (UTF-8) that has at most `units` UTF-16 code units and splits no character.
std::string_view prefixOfUtf16Length(std::string_view text, std::size_t units);
/// The number of UTF-16 code units of `text` (UTF-8).
std::size_t utf16Length(std::string_view text);

}  // namespace ostrel
