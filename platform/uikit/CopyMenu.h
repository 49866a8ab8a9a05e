#pragma once

#include "platform/graphics/Geometry.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

class UIGestureRecognizer;
class UIView;

/// The menu by which text at rest is copied as a whole: a long press or the secondary button opens it.
class CopyMenu final {
public:
    /// Opens it at `point` (in the window of `view`); false when the view is in no window or `text` is empty.
    static bool open(UIView& view, CGPoint point, const std::string& text);
    /// A recogniser of `view`, which outlives it; `text` gives what is to be copied now, empty for nothing.
    static std::shared_ptr<UIGestureRecognizer> longPress(UIView& view, std::function<std::string()> text);
};

}  // namespace ostrel
