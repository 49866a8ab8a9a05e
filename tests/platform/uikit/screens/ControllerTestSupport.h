#pragma once

#include "backends/headless/HeadlessPlatform.h"
#include "platform/uikit/screens/UINavigationController.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

using CallLog = std::vector<std::string>;

/// A screen that writes down its appearance calls ("A will+", "A did-") and fails the test when one is out of order.
class RecordedScreen : public UIViewController {
public:
    RecordedScreen(std::string name, CallLog& log) : log_(log) { setTitle(std::move(name)); }

    void viewDidLoad() override { log_.push_back(title() + " load"); }
    void viewWillAppear(bool) override { move("will+", {"", "did-", "will-"}); }
    void viewDidAppear(bool) override { move("did+", {"will+"}); }
    void viewWillDisappear(bool) override { move("will-", {"did+", "will+"}); }
    void viewDidDisappear(bool) override { move("did-", {"will-"}); }
    bool cancelOperation() override { return onCancel ? onCancel() : UIViewController::cancelOperation(); }

    /// Run at a call: "will+", "did+", "will-" or "did-".
    std::function<void(const std::string& call)> onCall;
    std::function<bool()> onCancel;
    const std::string& lastCall() const { return last_; }

private:
    void move(const std::string& call, const std::vector<std::string>& allowed) {
        EXPECT_NE(std::ranges::find(allowed, last_), allowed.end()) << title() << ": " << call << " after " << last_;
        last_ = call;
        log_.push_back(title() + " " + call);
        if (onCall) onCall(call);
    }
    CallLog& log_;
    std::string last_;
};

/// One window of the headless backend; every flush is checked by its oracle.
class ControllerTest : public ::testing::Test {
protected:
    void TearDown() override {
        if (window_) window_->setRootViewController(nullptr);
        settle();
    }
    static void use(UIUserInterfaceIdiom idiom) { UIDevice::currentDevice().setUserInterfaceIdiom(idiom); }
    /// A new window that shows `root`, in the place of the former window; the log begins after that.
    void show(std::shared_ptr<UIViewController> root, CGSize size = {375, 667}) {
        if (window_) window_->setRootViewController(nullptr);
        window_ = platform_.makeWindow(size);
        window_->setRootViewController(std::move(root));
        settle();
        log.clear();
    }
    std::shared_ptr<RecordedScreen> screen(const std::string& name) { return make<RecordedScreen>(name, log); }
    /// A root of a stack with screens of these names pushed.
    std::shared_ptr<UINavigationController> stackOf(const std::vector<std::string>& names) {
        auto navigation = make<UINavigationController>(screen(names.front()));
        for (std::size_t i = 1; i < names.size(); ++i) navigation->pushViewController(screen(names[i]), false);
        return navigation;
    }
    UIWindow& window() { return *window_; }
    void advance(double seconds) { platform_.advance(seconds); }
    void settle() { platform_.advance(1); }

    // Changes with a movement, and waits for its end.
    using Completion = std::function<void()>;
    void present(UIViewController& from, std::shared_ptr<UIViewController> shown, Completion completion = {}) {
        from.presentViewController(std::move(shown), true, std::move(completion));
        settle();
    }
    void dismiss(UIViewController& shown, Completion completion = {}) {
        shown.dismissViewControllerAnimated(true, std::move(completion));
        settle();
    }
    void resize(CGSize size) {
        window_->setSize(size);
        settle();
    }

    bool key(UIKeyCode code, unsigned modifiers = modifierNone, std::string characters = {}) {
        return platform_.key(code, modifiers, std::move(characters));
    }
    void touch(UITouchPhase phase, CGPoint point) { platform_.touch(phase, point); }
    void tap(CGPoint point) { platform_.tap(point); }
    /// From the left edge to each x in turn, a sixtieth of a second apart; the finger is lifted when `lifts`.
    void dragBack(const std::vector<CGFloat>& xs, bool lifts = true) {
        touch(UITouchPhase::began, {4, 300});
        for (const CGFloat x : xs) {
            advance(1.0 / 60);
            touch(UITouchPhase::moved, {x, 300});
        }
        if (lifts) touch(UITouchPhase::ended, {xs.back(), 300});
    }
    /// The first view below `root` (or it) that `matches`; null without one.
    static UIView* find(UIView& root, const std::function<bool(UIView&)>& matches) {
        if (matches(root)) return &root;
        for (const auto& child : root.subviews()) {
            if (UIView* found = find(*child, matches)) return found;
        }
        return nullptr;
    }
    static UIView* labelled(UIView& root, AccessibilityRole role, const std::string& label) {
        return find(root, [&](UIView& view) {
            return view.accessibility().role == role && view.accessibility().label == label;
        });
    }
    static UIView* button(UIViewController& shown, const std::string& title) {
        return labelled(*shown.view(), AccessibilityRole::button, title);
    }
    void press(UIView* button) {
        ASSERT_NE(button, nullptr);
        platform_.tap(*button);
    }
    /// Where the view of `shown` stands in the window.
    static CGRect frameOf(UIViewController& shown) { return frameOf(*shown.view()); }
    static CGRect frameOf(const UIView& view) { return view.convertRectToView(view.bounds(), nullptr); }

    HeadlessPlatform platform_;
    CallLog log;

private:
    std::shared_ptr<UIWindow> window_;
};

}  // namespace ostrel
