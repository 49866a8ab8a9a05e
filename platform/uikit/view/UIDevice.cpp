#include "platform/uikit/view/UIDevice.h"

#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

UIDevice& UIDevice::currentDevice() {
    static UIDevice device;
    return device;
}

UIScreen& UIScreen::mainScreen() {
    static UIScreen screen;
    return screen;
}

CGRect UIScreen::bounds() const {
    if (hasBounds_) return bounds_;
    const UIWindow* window = UIApplication::sharedApplication().firstWindow();
    return window ? CGRect{{}, window->frame().size} : CGRect{};
}

CGFloat UIScreen::scale() const {
    const UIWindow* window = UIApplication::sharedApplication().firstWindow();
    return window && window->backend() ? window->backend()->scale() : 1;
}

UIApplication& UIApplication::sharedApplication() {
    static UIApplication application;
    return application;
}

}  // namespace ostrel
