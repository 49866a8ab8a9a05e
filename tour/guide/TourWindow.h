#pragma once

#include "platform/uikit/view/UIControl.h"
#include "platform/uikit/view/UIWindow.h"
#include "reader/application/ReaderApplication.h"
#include "tour/guide/TourInput.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// Looks at the window as a person does: finds the views on screen, and waits for them. Events are sent by TourInput.
/// Main thread.
class TourWindow final {
public:
    explicit TourWindow(ReaderApplication& reader) : reader_(reader) {}

    /// The views that can be seen now, back to front: not hidden, not transparent, within the window.
    std::vector<UIView*> visibleViews() const;
    /// The frontmost visible view that `wanted` accepts; null when there is none.
    UIView* find(const std::function<bool(UIView&)>& wanted) const;
    /// The frontmost label, text view or button that shows exactly this text.
    UIView* text(const std::string& text) const;
    /// The frontmost label, text view or button whose text contains `part`.
    UIView* textContaining(const std::string& part) const;
    /// The frontmost visible view of a class.
    template <class T>
    T* first() const {
        return static_cast<T*>(find([](UIView& view) { return dynamic_cast<T*>(&view) != nullptr; }));
    }
    template <class T>
    std::vector<T*> all() const {
        std::vector<T*> found;
        for (UIView* view : visibleViews()) {
            if (auto* cast = dynamic_cast<T*>(view)) found.push_back(cast);
        }
        return found;
    }
    /// In the coordinates of the window.
    CGRect rectOf(const UIView& view) const;
    /// The middle of the part of `view` that is within the window.
    CGPoint centerOf(const UIView& view) const;

    /// Runs the event loop until `condition` holds; false when it did not within `milliseconds`.
    bool waitFor(const std::function<bool()>& condition, int milliseconds = 5000) const;
    /// Runs the event loop until nothing moves and everything is painted; false when that took too long.
    bool settle(int milliseconds = 5000) const;
    bool savePicture(const std::string& path) const;

private:
    ReaderApplication& reader_;
};

}  // namespace ostrel
