#pragma once

#include "backends/headless/HeadlessBackend.h"
#include "backends/headless/HeadlessText.h"
#include "backends/headless/VirtualTime.h"
#include "platform/uikit/events/UIEvent.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A platform without a display, installed as long as this object lives: virtual time, fixed text metrics, a
/// fixed locale, and windows on the oracle. It flushes windows at the end of each turn, and gives them 60
/// frames a virtual second while they want frames. It also plays the user: touches, keys and typing go to the
/// current window, the last one made. Every operation of the user then runs the tasks that are due. Main
/// thread.
class HeadlessPlatform final {
public:
    static constexpr double frameInterval = 1.0 / 60;

    explicit HeadlessPlatform(CGSize size = {375, 667}, UIUserInterfaceIdiom idiom = UIUserInterfaceIdiom::phone);
    ~HeadlessPlatform();
    HeadlessPlatform(const HeadlessPlatform&) = delete;
    HeadlessPlatform& operator=(const HeadlessPlatform&) = delete;

    VirtualTime& time() { return time_; }
    VirtualRunLoop& loop() { return time_.loop(); }
    HeadlessLocale& locale() { return *locale_; }

    /// Makes a window, which becomes the current one. The caller owns it.
    std::shared_ptr<UIWindow> makeWindow(CGSize size);
    /// The current window. When there is none, the platform makes and owns one of its own default size.
    UIWindow& window();
    /// The oracle of the current window.
    HeadlessBackend& backend();

    // Time
    void advance(double seconds) { time_.loop().advance(seconds); }
    /// Runs the tasks that are due now, so that all changes are mounted.
    void settle() { time_.loop().runUntilIdle(); }

    // Touches and pointer; points in the window
    UITouchType touchType = UITouchType::direct;
    UIButtonMask touchButton = UIButtonMask::primary;
    void touch(UITouchPhase phase, CGPoint point, std::int64_t identifier = 1);
    void tap(CGPoint point);
    /// Taps the middle of the view.
    void tap(const UIView& view);
    /// Taps the first visible view with this text; false when there is none.
    bool tapText(std::string_view text);
    void press(CGPoint point, double seconds);
    /// Moves a finger, one step a frame. With `restsAtEnd` the finger rests before it leaves, so that nothing
    /// is flung.
    void drag(CGPoint from, CGPoint to, double seconds = 0.2, bool restsAtEnd = false);
    /// Positive `dy` moves the content down.
    void scroll(CGPoint point, CGFloat dy);
    void hover(CGPoint point);

    // Keyboard
    bool key(UIKeyCode code, unsigned modifiers = modifierNone, std::string characters = {});
    /// Appends to the text of the focused editor, as a user would; false when no editor has the focus.
    bool type(std::string_view text);
    /// Replaces the text of the focused editor.
    bool typeOver(std::string_view text);
    bool pressReturn();

    // The visible views
    std::vector<std::string> texts();
    bool sees(std::string_view text);
    /// The first visible view with this text (or accessibility label); null when there is none.
    UIView* viewWithText(std::string_view text);
    UIView* viewWithLabel(std::string_view label);
    CGPoint middleOf(const UIView& view) const;

private:
    struct Mounted;
    Mounted& current();
    static void scheduleFrame(const std::shared_ptr<Mounted>& mounted);
    UIView* firstView(const std::vector<ViewTag>& tags);
    const TextInputContent* focusedEditor();

    VirtualTime time_;
    std::shared_ptr<HeadlessLocale> locale_;
    CGSize size_;
    std::vector<std::shared_ptr<Mounted>> mounted_;
    std::shared_ptr<UIWindow> ownWindow_;
};

}  // namespace ostrel
