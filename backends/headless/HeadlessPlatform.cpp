#include "backends/headless/HeadlessPlatform.h"

#include "platform/uikit/events/TextInputClient.h"

#include <algorithm>

namespace ostrel {

struct HeadlessPlatform::Mounted {
    HeadlessBackend backend;
    std::weak_ptr<UIWindow> window;
    bool frameScheduled = false;
};

HeadlessPlatform::HeadlessPlatform(CGSize size, UIUserInterfaceIdiom idiom)
    : locale_(std::make_shared<HeadlessLocale>()), size_(size) {
    UIDevice::currentDevice().setUserInterfaceIdiom(idiom);
    UIView::setReduceMotionEnabled(false);
    TextMeasurer::install(std::make_shared<HeadlessTextMeasurer>());
    NSLocale::install(locale_);
}

HeadlessPlatform::~HeadlessPlatform() {
    if (ownWindow_) ownWindow_->setRootViewController(nullptr);
    // Runs the tasks that the closing of screens has posted.
    time_.loop().advance(1);
    for (const auto& mounted : mounted_) {
        if (const auto window = mounted->window.lock()) window->setBackend(nullptr);
    }
    ownWindow_.reset();
    NSLocale::install(nullptr);
    UIDevice::currentDevice().setUserInterfaceIdiom(UIUserInterfaceIdiom::phone);
}

std::shared_ptr<UIWindow> HeadlessPlatform::makeWindow(CGSize size) {
    std::erase_if(mounted_, [](const auto& mounted) { return mounted->window.expired(); });
    const auto mounted = std::make_shared<Mounted>();
    const std::weak_ptr<Mounted> weak = mounted;
    mounted->backend.onNeedsFlush = [weak] {
        RunLoop::main().atEndOfTurn([weak] {
            const auto present = weak.lock();
            if (const auto window = present ? present->window.lock() : nullptr) window->flush();
        });
    };
    mounted->backend.onFramesWanted = [weak](bool wanted) {
        if (const auto present = weak.lock(); present && wanted) scheduleFrame(present);
    };
    mounted_.push_back(mounted);
    const auto window = make<UIWindow>(size);
    mounted->window = window;
    window->setBackend(&mounted->backend);
    return window;
}

void HeadlessPlatform::scheduleFrame(const std::shared_ptr<Mounted>& mounted) {
    if (std::exchange(mounted->frameScheduled, true)) return;
    RunLoop::main().performAfter(frameInterval, [weak = std::weak_ptr(mounted)] {
        const auto present = weak.lock();
        const auto window = present ? present->window.lock() : nullptr;
        if (!window) return;
        present->frameScheduled = false;
        if (!present->backend.framesWanted()) return;
        window->frame(Clock::shared().monotonicSeconds());
        if (present->backend.framesWanted()) scheduleFrame(present);
    });
}

HeadlessPlatform::Mounted& HeadlessPlatform::current() {
    const auto alive = std::find_if(mounted_.rbegin(), mounted_.rend(),
                                    [](const auto& mounted) { return !mounted->window.expired(); });
    if (alive != mounted_.rend()) return **alive;
    ownWindow_ = makeWindow(size_);
    return *mounted_.back();
}

UIWindow& HeadlessPlatform::window() { return *current().window.lock(); }

HeadlessBackend& HeadlessPlatform::backend() { return current().backend; }

// Fingers and pointer

void HeadlessPlatform::touch(UITouchPhase phase, CGPoint point, std::int64_t identifier) {
    settle();
    UITouch touch;
    touch.identifier = identifier;
    touch.phase = phase;
    touch.type = touchType;
    touch.button = touchButton;
    touch.location = point;
    touch.timestamp = Clock::shared().monotonicSeconds();
    window().sendTouch(touch);
    settle();
}

void HeadlessPlatform::tap(CGPoint point) { press(point, 0.05); }

void HeadlessPlatform::tap(const UIView& view) { tap(middleOf(view)); }

bool HeadlessPlatform::tapText(std::string_view text) {
    UIView* const view = viewWithText(text);
    if (view) tap(*view);
    return view != nullptr;
}

void HeadlessPlatform::press(CGPoint point, double seconds) {
    touch(UITouchPhase::began, point);
    advance(seconds);
    touch(UITouchPhase::ended, point);
}

void HeadlessPlatform::drag(CGPoint from, CGPoint to, double seconds, bool restsAtEnd) {
    touch(UITouchPhase::began, from);
    const int steps = std::max(1, static_cast<int>(std::lround(seconds / frameInterval)));
    for (int step = 1; step <= steps; ++step) {
        const double part = static_cast<double>(step) / steps;
        advance(seconds / steps);
        touch(UITouchPhase::moved, {from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part});
    }
    if (restsAtEnd) advance(0.3);
    touch(UITouchPhase::ended, to);
}

void HeadlessPlatform::scroll(CGPoint point, CGFloat dy) {
    settle();
    window().sendScroll(
        {.location = point, .dy = dy, .precise = true, .timestamp = Clock::shared().monotonicSeconds()});
    settle();
}

void HeadlessPlatform::hover(CGPoint point) {
    settle();
    window().sendHover(point, true);
    settle();
}

// Keyboard

bool HeadlessPlatform::key(UIKeyCode code, unsigned modifiers, std::string characters) {
    settle();
    UIPress press;
    press.key = {.code = code, .characters = std::move(characters), .modifiers = modifiers};
    press.timestamp = Clock::shared().monotonicSeconds();
    const bool used = window().sendKey(press);
    settle();
    return used;
}

const TextInputContent* HeadlessPlatform::focusedEditor() {
    settle();
    const UIView* const view = window().firstResponder();
    const auto* const node = view ? backend().node(view->tag()) : nullptr;
    return node ? std::get_if<TextInputContent>(&node->state->content) : nullptr;
}

bool HeadlessPlatform::type(std::string_view text) {
    const TextInputContent* const editor = focusedEditor();
    return editor && typeOver(editor->text + std::string(text));
}

bool HeadlessPlatform::typeOver(std::string_view text) {
    const TextInputContent* const editor = focusedEditor();
    if (!editor || !editor->enabled) return false;
    UIView& view = *window().firstResponder();
    const CGFloat width = view.bounds().width() - editor->insets.left - editor->insets.right;
    const UIFont font = editor->font;
    const auto kept = view.shared_from_this();
    window().textInputChanged(view.tag(), std::string(text));
    // The caret goes behind the typed text. An empty text has the height of one line.
    const CGFloat height = std::max(TextMeasurer::shared().lineHeight(font),
                                    TextMeasurer::shared().measure(text, font, width).size.height);
    window().textInputSelectionChanged(view.tag(), {utf16Length(text), 0}, height);
    settle();
    return true;
}

bool HeadlessPlatform::pressReturn() {
    if (!focusedEditor()) return key(UIKeyCode::enter);
    window().textInputReturn(window().firstResponder()->tag());
    settle();
    return true;
}

// The visible views

std::vector<std::string> HeadlessPlatform::texts() {
    settle();
    return backend().visibleTexts();
}

bool HeadlessPlatform::sees(std::string_view text) {
    const auto all = texts();
    return std::find(all.begin(), all.end(), text) != all.end();
}

UIView* HeadlessPlatform::firstView(const std::vector<ViewTag>& tags) {
    return tags.empty() ? nullptr : window().viewWithTag(tags.front());
}

UIView* HeadlessPlatform::viewWithText(std::string_view text) {
    settle();
    return firstView(backend().tagsWithText(text));
}

UIView* HeadlessPlatform::viewWithLabel(std::string_view label) {
    settle();
    return firstView(backend().tagsWithLabel(label));
}

CGPoint HeadlessPlatform::middleOf(const UIView& view) const {
    const CGRect bounds = view.bounds();
    return view.convertPointToView({bounds.midX(), bounds.midY()}, nullptr);
}

}  // namespace ostrel
