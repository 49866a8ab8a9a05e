#pragma once

#include "platform/uikit/view/UIControl.h"
#include "platform/uikit/view/UIWindow.h"
#include "reader/ReaderApplication.h"
#include "tour/TourInput.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// The window as a person sees it: what is on screen, where, and waiting until it is there. It only looks; what it does
/// goes through TourInput.
class TourWindow final {
public:
    explicit TourWindow(ReaderApplication& reader) : reader_(reader) {}

    /// Views that can be seen now, back to front: shown, not transparent, within the window.
    std::vector<UIView*> visibleViews() const;
    /// The frontmost visible view that `wanted` accepts; null when there is none.
    UIView* find(const std::function<bool(UIView&)>& wanted) const;
    /// The frontmost label, text view, button or tab that shows exactly this text.
    UIView* text(const std::string& text) const;
    /// One whose text contains this one.
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
    CGRect rectOf(const UIView& view) const;
    CGPoint centerOf(const UIView& view) const;

    /// Runs the event loop until `condition` holds; false when it did not within `milliseconds`.
    bool waitFor(const std::function<bool()>& condition, int milliseconds = 5000) const;
    /// Waits until nothing moves and everything is painted.
    bool settle(int milliseconds = 5000) const;
    bool savePicture(const std::string& path) const;

private:
    ReaderApplication& reader_;
};

}  // namespace ostrel
