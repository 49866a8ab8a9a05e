#pragma once

#include "platform/uikit/text/UILabel.h"

#include <cstdint>
#include <memory>
#include <string>

namespace ostrel {

/// A short message at the lower edge of a screen that fades after four seconds. Shows an embedder a view that animates
/// itself and uses the run loop for its time. Takes no touches. Main thread.
class ReaderNotice final : public UIView {
public:
    ~ReaderNotice() override;
    void initialise();
    /// Shows `text` in the place of an earlier one, and starts its time anew.
    void show(const std::string& text);
    /// Places the notice at the lower edge of `area`, which is in the coordinates of the superview.
    void placeIn(const CGRect& area);

private:
    std::shared_ptr<UILabel> text_;
    std::uint64_t timer_ = 0;
};

}  // namespace ostrel
