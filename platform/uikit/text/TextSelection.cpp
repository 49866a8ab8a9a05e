#include "platform/uikit/text/TextSelection.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/uikit/text/ContextMenu.h"
#include "platform/uikit/view/UIGestureRecognizer.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>
#include <vector>

namespace ostrel {

namespace {

constexpr CGFloat dragThreshold = 3;  // points; a pointer that moves less does not drag

enum class Kind { blank, letter, alone };

bool continuesCharacter(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

Kind kindAt(std::string_view text, std::size_t place) {
    const auto lead = static_cast<unsigned char>(text[place]);
    if (lead == ' ' || lead == '\t') return Kind::blank;
    // From U+2000 on: punctuation marks, and scripts that have no blanks between words.
    if (lead >= 0xE2) return Kind::alone;
    const bool isLetter = lead >= 0x80 || (lead >= '0' && lead <= '9') || (lead >= 'A' && lead <= 'Z') ||
                          (lead >= 'a' && lead <= 'z') || lead == '_' || lead == '\'';
    return isLetter ? Kind::letter : Kind::alone;
}

void putOnClipboard(const std::string& text) {
    const auto& put = UIApplication::sharedApplication().setPasteboardText;
    if (put) put(text);
}

}  // namespace

TextSelection::TextSelection(UIView& view, std::function<Layout()> layout, std::function<void()> didChange)
    : view_(view), layout_(std::move(layout)), didChange_(std::move(didChange)) {}

TextSelection::~TextSelection() = default;

void TextSelection::initialise() {
    press_ = std::make_shared<UILongPressGestureRecognizer>([this](UIGestureRecognizer& press) { pressed(press); });
    press_->shouldBegin = [this](UIGestureRecognizer&) { return selectsByPress_ && !layout_().text.empty(); };
    view_.addGestureRecognizer(press_);
}

std::pair<std::size_t, std::size_t> TextSelection::wordAt(std::string_view text, std::size_t offset) {
    if (text.empty()) return {0, 0};
    std::size_t begin = std::min(offset, text.size() - 1);
    while (begin > 0 && continuesCharacter(text[begin])) --begin;
    const auto next = [&](std::size_t place) {
        do ++place;
        while (place < text.size() && continuesCharacter(text[place]));
        return place;
    };
    std::size_t end = next(begin);
    const Kind kind = kindAt(text, begin);
    if (kind == Kind::alone) return {begin, end};
    while (end < text.size() && kindAt(text, end) == kind) end = next(end);
    while (begin > 0) {
        std::size_t before = begin - 1;
        while (before > 0 && continuesCharacter(text[before])) --before;
        if (kindAt(text, before) != kind) break;
        begin = before;
    }
    return {begin, end};
}

std::pair<std::size_t, std::size_t> TextSelection::paragraphAt(std::string_view text, std::size_t offset) {
    constexpr std::string_view breaks = "\r\n";
    offset = std::min(offset, text.size());
    const std::size_t before = offset > 0 ? text.find_last_of(breaks, offset - 1) : std::string_view::npos;
    const std::size_t begin = before == std::string_view::npos ? 0 : before + 1;
    return {begin, std::min(text.find_first_of(breaks, offset), text.size())};
}

bool TextSelection::selectAll() {
    const std::size_t end = layout_().text.size();
    select(0, end);
    return end > 0;
}

void TextSelection::select(std::size_t begin, std::size_t end) {
    if (begin == begin_ && end == end_) return;
    begin_ = begin;
    end_ = end;
    if (UIWindow* const window = view_.window(); window && !isEmpty()) window->setTextSelection(shared_from_this());
    if (didChange_) didChange_();
}

bool TextSelection::copy() const {
    const std::string_view text = layout_().text;
    if (isEmpty() || end_ > text.size()) return false;
    putOnClipboard(std::string(text.substr(begin_, end_ - begin_)));
    return true;
}

std::size_t TextSelection::offsetAt(CGPoint pointInWindow) const {
    const Layout layout = layout_();
    const UIWindow* const window = view_.window();
    if (!window || layout.text.empty()) return 0;
    const CGPoint point = window->convertPointToView(pointInWindow, &view_);
    return TextMeasurer::shared().offsetAtPoint(layout.text, layout.lines,
                                                {point.x - layout.origin.x, point.y - layout.origin.y});
}

std::pair<std::size_t, std::size_t> TextSelection::unitAt(CGPoint pointInWindow) const {
    const std::size_t place = offsetAt(pointInWindow);
    switch (unit_) {
    case Unit::word: return wordAt(layout_().text, place);
    case Unit::paragraph: return paragraphAt(layout_().text, place);
    case Unit::character: break;
    }
    return {place, place};
}

bool TextSelection::touchBegan(const UITouch& touch) {
    if (layout_().text.empty()) return false;
    if (touch.button == UIButtonMask::secondary) return openMenu(touch.location);
    clear();
    if (touch.type != UITouchType::pointer) return false;
    unit_ = touch.tapCount < 2 ? Unit::character : touch.tapCount == 2 ? Unit::word : Unit::paragraph;
    std::tie(anchorBegin_, anchorEnd_) = unitAt(touch.location);
    // From now on Command+A selects this text, though the selection is still empty.
    if (UIWindow* const window = view_.window()) window->setTextSelection(shared_from_this());
    select(anchorBegin_, anchorEnd_);
    return unit_ != Unit::character;
}

void TextSelection::touchMoved(const UITouch& touch) {
    const CGFloat moved =
        std::hypot(touch.location.x - touch.startLocation.x, touch.location.y - touch.startLocation.y);
    if (touch.type != UITouchType::pointer || touch.button != UIButtonMask::primary || moved < dragThreshold ||
        layout_().text.empty()) {
        return;
    }
    const auto [begin, end] = unitAt(touch.location);
    select(std::min(anchorBegin_, begin), std::max(anchorEnd_, end));
}

void TextSelection::pressed(UIGestureRecognizer& press) {
    const CGPoint point = press.locationInView(nullptr);
    switch (press.state()) {
    case UIGestureRecognizerState::began:
        std::tie(anchorBegin_, anchorEnd_) = wordAt(layout_().text, offsetAt(point));
        select(anchorBegin_, anchorEnd_);
        break;
    case UIGestureRecognizerState::changed: {
        const auto [begin, end] = wordAt(layout_().text, offsetAt(point));
        select(std::min(anchorBegin_, begin), std::max(anchorEnd_, end));
        break;
    }
    case UIGestureRecognizerState::ended: openMenu(point); break;
    default: break;
    }
}

bool TextSelection::openMenu(CGPoint pointInWindow) {
    const std::string text(layout_().text);
    if (!view_.window() || text.empty()) return false;
    std::vector<ContextMenu::Item> items;
    if (!isEmpty() && end_ <= text.size()) {
        items.push_back(
            {platformText("Copy"), false, [part = text.substr(begin_, end_ - begin_)] { putOnClipboard(part); }});
    }
    items.push_back({platformText("Copy All"), false, [text] { putOnClipboard(text); }});
    return ContextMenu::show(*view_.window(), pointInWindow, std::move(items)) != nullptr;
}

}  // namespace ostrel
