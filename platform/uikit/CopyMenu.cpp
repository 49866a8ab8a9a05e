#include "platform/uikit/CopyMenu.h"

#include "platform/uikit/ContextMenu.h"
#include "platform/uikit/PlatformText.h"
#include "platform/uikit/UIGestureRecognizer.h"
#include "platform/uikit/UIWindow.h"

#include <utility>

namespace ostrel {

bool CopyMenu::open(UIView& view, CGPoint point, const std::string& text) {
    if (!view.window() || text.empty()) return false;
    const auto copy = [text] {
        const auto& put = UIApplication::sharedApplication().setPasteboardText;
        if (put) put(text);
    };
    return ContextMenu::show(*view.window(), point, {{platformText("Copy"), false, copy}}) != nullptr;
}

std::shared_ptr<UIGestureRecognizer> CopyMenu::longPress(UIView& view, std::function<std::string()> text) {
    auto press =
        std::make_shared<UILongPressGestureRecognizer>([&view, text](UIGestureRecognizer& recognizer) {
            if (recognizer.state() == UIGestureRecognizerState::began)
                open(view, recognizer.locationInView(nullptr), text());
        });
    press->shouldBegin = [text = std::move(text)](UIGestureRecognizer&) { return !text().empty(); };
    return press;
}

}  // namespace ostrel
