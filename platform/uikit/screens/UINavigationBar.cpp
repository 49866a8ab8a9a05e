#include "platform/uikit/screens/NavigationBarContents.h"
#include "platform/uikit/screens/UINavigationController.h"
#include "platform/uikit/view/UIDevice.h"

namespace ostrel {

namespace {

constexpr UIColor barColor = UIColor::rgb(0xF9F9FB, 0.94f);
constexpr CGFloat hairlineHeight = 0.5;

const std::string& titleOf(UIViewController& screen) {
    const std::string& own = screen.navigationItem().title();
    return own.empty() ? screen.title() : own;
}

}  // namespace

struct UINavigationBar::Parts {
    struct Page {
        std::weak_ptr<UIViewController> screen;
        std::optional<std::string> back;
        std::shared_ptr<NavigationBarContents> contents;
    };

    Page present;
    std::optional<Page> former;  ///< while the bar changes
    double direction = 1;
    UIColor tint = UIColor::tint();
    std::shared_ptr<UIView> hairline;

    static NavigationBarContents::Description description(UIViewController& screen,
                                                          const std::optional<std::string>& back) {
        auto& item = screen.navigationItem();
        return {titleOf(screen), back, item.titleView(), item.leftBarButtonItem(), item.rightBarButtonItem()};
    }
    static void forget(const Page& page) {
        const auto screen = page.screen.lock();
        if (!screen) return;
        auto& item = screen->navigationItem();
        item.didChange = nullptr;
        if (item.leftBarButtonItem()) item.leftBarButtonItem()->didChange = nullptr;
        if (item.rightBarButtonItem()) item.rightBarButtonItem()->didChange = nullptr;
    }
};

UINavigationBar::UINavigationBar(UINavigationController& owner) : owner_(owner), parts_(std::make_shared<Parts>()) {}

CGFloat UINavigationBar::barHeight() {
    return UIDevice::currentDevice().userInterfaceIdiom() == UIUserInterfaceIdiom::mac ? 52 : 44;
}

void UINavigationBar::initialise() {
    setSurface(true);
    parts_->hairline = make<UIView>();
    parts_->hairline->setBackgroundColor(UIColor::separator());
    addSubview(parts_->hairline);
    setTranslucent(true);
}

void UINavigationBar::setTranslucent(bool translucent) {
    translucent_ = translucent;
    setBackgroundColor(translucent ? barColor : UIColor::white());
}

void UINavigationBar::setTintColor(UIColor color) {
    if (parts_->tint == color) return;
    parts_->tint = color;
    const auto screen = parts_->present.screen.lock();
    if (!screen) return;
    endChange(true);
    parts_->present.screen.reset();
    show(screen.get(), std::optional(parts_->present.back));
}

void UINavigationBar::watch(UIViewController& top) {
    const auto changed = [weak = weak_from_this()] {
        if (const auto self = weak.lock()) static_cast<UINavigationBar&>(*self).itemsDidChange();
    };
    auto& item = top.navigationItem();
    item.didChange = changed;
    if (item.leftBarButtonItem()) item.leftBarButtonItem()->didChange = changed;
    if (item.rightBarButtonItem()) item.rightBarButtonItem()->didChange = changed;
}

void UINavigationBar::itemsDidChange() {
    const auto screen = parts_->present.screen.lock();
    if (!screen) return;
    watch(*screen);
    if (parts_->present.contents->update(Parts::description(*screen, parts_->present.back))) return;
    const double alpha = parts_->present.contents->alpha();
    auto former = std::move(parts_->former);
    parts_->former.reset();
    show(screen.get(), std::optional(parts_->present.back));
    parts_->former = std::move(former);
    parts_->present.contents->setAlpha(alpha);
}

void UINavigationBar::show(UIViewController* top, const std::optional<std::string>& back) {
    endChange(true);
    if (top && parts_->present.screen.lock().get() == top) {
        parts_->present.back = back;
        watch(*top);
        if (parts_->present.contents->update(Parts::description(*top, back))) return;
    }
    Parts::forget(parts_->present);
    if (parts_->present.contents) parts_->present.contents->removeFromSuperview();
    parts_->present = {};
    if (!top) return;
    auto goBack = [weak = owner_.weak_from_this()] {
        if (const auto owner = weak.lock())
            static_cast<UINavigationController&>(*owner).popViewControllerAnimated(true);
    };
    parts_->present = {top->weak_from_this(), back,
                       make<NavigationBarContents>(Parts::description(*top, back), parts_->tint, std::move(goBack))};
    addSubview(parts_->present.contents);
    bringSubviewToFront(parts_->hairline);
    watch(*top);
    setNeedsLayout();
    layoutIfNeeded();
}

void UINavigationBar::beginChange(UIViewController* top, const std::optional<std::string>& back, bool forward) {
    endChange(true);
    auto former = std::exchange(parts_->present, {});
    Parts::forget(former);
    show(top, back);
    if (!former.contents) return;
    former.contents->setUserInteractionEnabled(false);
    parts_->former = std::move(former);
    parts_->direction = forward ? 1 : -1;
    setChangeProgress(0);
}

void UINavigationBar::setChangeProgress(double progress) {
    if (!parts_->former) return;
    if (parts_->present.contents) parts_->present.contents->setDisplacement((1 - progress) * parts_->direction);
    parts_->former->contents->setDisplacement(-progress * parts_->direction);
}

void UINavigationBar::endChange(bool completed) {
    if (!parts_->former) return;
    auto former = std::move(*parts_->former);
    parts_->former.reset();
    if (!completed) {
        std::swap(former, parts_->present);
        Parts::forget(former);
        if (const auto screen = parts_->present.screen.lock()) {
            watch(*screen);
            parts_->present.contents->setUserInteractionEnabled(true);
            itemsDidChange();
        }
    }
    if (former.contents) former.contents->removeFromSuperview();
    if (parts_->present.contents) parts_->present.contents->setDisplacement(0);
}

void UINavigationBar::layoutSubviews() {
    const CGSize size = bounds().size;
    const CGFloat height = std::min(barHeight(), size.height);
    const CGRect frame{0, size.height - height, size.width, height};
    if (parts_->present.contents) parts_->present.contents->setFrame(frame);
    if (parts_->former) parts_->former->contents->setFrame(frame);
    parts_->hairline->setFrame({0, size.height - hairlineHeight, size.width, hairlineHeight});
}

}  // namespace ostrel
