#pragma once

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
};

/// The longest beginning of `text` (UTF-8) of at most `units` UTF-16 code units that ends between characters.
std::string_view prefixOfUtf16Length(std::string_view text, std::size_t units);

}  // namespace ostrel
