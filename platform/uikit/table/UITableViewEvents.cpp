#include "platform/foundation/resources/PlatformText.h"
#include "platform/foundation/runloop/RunLoop.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/table/UITableViewImplementation.h"
#include "platform/uikit/view/UIDevice.h"
#include "platform/uikit/view/UIWindow.h"

namespace ostrel {

namespace {

constexpr double pressDelay = 0.08;  // a drag that begins sooner shows no press
constexpr CGFloat tapTolerance = 10;
constexpr double swipeDuration = 0.25;
constexpr CGFloat swipeVelocity = 200;
constexpr CGFloat swipeResistance = 0.25;  // of the finger's way beyond the buttons

}  // namespace

void UITableView::Implementation::initialiseGestures() {
    swipeRecognizer = std::make_shared<UIPanGestureRecognizer>(
        [this](UIGestureRecognizer& recognizer) { handleSwipe(static_cast<UIPanGestureRecognizer&>(recognizer)); });
    swipeRecognizer->axis = UIPanGestureRecognizer::Axis::horizontal;
    swipeRecognizer->allowsPointer = UIDevice::currentDevice().userInterfaceIdiom() != UIUserInterfaceIdiom::mac;
    swipeRecognizer->shouldBegin = [this](UIGestureRecognizer& recognizer) {
        const auto& pan = static_cast<UIPanGestureRecognizer&>(recognizer);
        // After a reload in this turn of the run loop there are no rows until the next flush.
        table.layoutIfNeeded();
        const auto path = table.indexPathForRowAtPoint(pan.locationInView(&table));
        if (!path || !rows.contains(*path)) return false;
        if (swipe && swipe->cell == rows.at(*path).cell) return true;
        const CGPoint moved = pan.translation(), speed = pan.velocity();
        return (moved.x < 0 || (moved.x == 0 && speed.x < 0)) && !actionsFor(*path).empty();
    };
    table.addGestureRecognizer(swipeRecognizer);

    const auto longPress = std::make_shared<UILongPressGestureRecognizer>([this](UIGestureRecognizer& recognizer) {
        if (recognizer.state() != UIGestureRecognizerState::began) return;
        const auto path = table.indexPathForRowAtPoint(recognizer.locationInView(&table));
        if (path) openMenu(*path, recognizer.locationInView(nullptr), ContextMenu::Highlight::none);
    });
    longPress->shouldBegin = [this](UIGestureRecognizer& recognizer) {
        table.layoutIfNeeded();
        const auto path = table.indexPathForRowAtPoint(recognizer.locationInView(&table));
        return path && !swipe && !actionsFor(*path).empty();
    };
    table.addGestureRecognizer(longPress);
}

// Selection

void UITableView::selectRow(NSIndexPath path, bool animated) {
    const auto former = std::exchange(selected_, path);
    if (former && former != path) {
        if (const auto row = implementation_->rows.find(*former); row != implementation_->rows.end()) {
            row->second.cell->setSelected(false, animated);
        }
    }
    if (const auto row = implementation_->rows.find(path); row != implementation_->rows.end()) {
        row->second.cell->setSelected(true, animated);
    }
}

void UITableView::deselectRow(NSIndexPath path, bool animated) {
    if (selected_ != path) return;
    selected_.reset();
    if (const auto row = implementation_->rows.find(path); row != implementation_->rows.end()) {
        row->second.cell->setSelected(false, animated);
    }
}

void UITableView::Implementation::select(NSIndexPath path) {
    if (!table.allowsSelection || !exists(path)) return;
    const auto kept = table.shared_from_this();
    table.selectRow(path, false);
    if (table.delegate_) table.delegate_->tableViewDidSelectRowAtIndexPath(table, path);
}

void UITableView::Implementation::pressRow(NSIndexPath path) {
    if (!table.allowsSelection) return;
    pressed = rows.at(path).cell;
    RunLoop::main().performAfter(pressDelay, [weak = table.weak_from_this(), number = ++pressNumber] {
        const auto owner = std::static_pointer_cast<UITableView>(weak.lock());
        if (!owner || owner->implementation_->pressNumber != number) return;
        if (const auto cell = owner->implementation_->pressed.lock()) cell->setHighlighted(true, false);
    });
}

void UITableView::Implementation::endPress(bool animated) {
    ++pressNumber;
    if (const auto cell = std::exchange(pressed, {}).lock()) cell->setHighlighted(false, animated);
}

// Touches

UIView* UITableView::hitTest(CGPoint point) {
    UIView* const hit = UIScrollView::hitTest(point);
    const auto& swipe = implementation_->swipe;
    // While a row is swiped open, a touch outside its buttons only closes the row.
    return hit && swipe && !hit->isDescendantOfView(*swipe->actions) ? this : hit;
}

void UITableView::touchesBegan(const UITouch& touch) {
    Implementation& self = *implementation_;
    self.touchIsUsed = isDecelerating();
    const auto path = self.pathOf(touch.view.lock().get());
    if (touch.button == UIButtonMask::secondary) {
        const auto row = path ? path : indexPathForRowAtPoint(touch.locationInView(*this));
        if (!row || !self.openMenu(*row, touch.location, ContextMenu::Highlight::none))
            UIScrollView::touchesBegan(touch);
        return;
    }
    if (self.swipe) {
        self.closeSwipe(true);
        self.touchIsUsed = true;
    }
    UIScrollView::touchesBegan(touch);
    if (path && !self.touchIsUsed && self.rows.contains(*path)) self.pressRow(*path);
}

void UITableView::touchesMoved(const UITouch& touch) {
    const CGFloat moved =
        std::hypot(touch.location.x - touch.startLocation.x, touch.location.y - touch.startLocation.y);
    if (moved > tapTolerance) implementation_->endPress(true);
    UIScrollView::touchesMoved(touch);
}

void UITableView::touchesEnded(const UITouch& touch) {
    const auto kept = shared_from_this();
    const auto cell = implementation_->pressed.lock();
    const auto path = cell ? implementation_->pathOf(cell.get()) : std::nullopt;
    UIScrollView::touchesEnded(touch);
    if (path) implementation_->select(*path);
    implementation_->endPress(false);
}

void UITableView::touchesCancelled(const UITouch& touch) {
    implementation_->endPress(true);
    UIScrollView::touchesCancelled(touch);
}

// Row actions

std::vector<UITableViewRowAction> UITableView::Implementation::actionsFor(NSIndexPath path) const {
    if (!table.dataSource_ || !exists(path) || !table.dataSource_->tableViewCanEditRowAtIndexPath(table, path))
        return {};
    auto actions = table.delegate_ ? table.delegate_->tableViewEditActionsForRowAtIndexPath(table, path)
                                   : std::vector<UITableViewRowAction>{};
    if (!actions.empty()) return actions;
    const auto commit = [this](NSIndexPath at) {
        if (table.dataSource_) {
            table.dataSource_->tableViewCommitEditingStyle(table, UITableViewCellEditingStyle::deleteStyle, at);
        }
    };
    return {{UITableViewRowAction::Style::destructive, platformText("Delete"), commit}};
}

bool UITableView::Implementation::openMenu(NSIndexPath path, CGPoint point, ContextMenu::Highlight highlight) {
    const auto row = rows.find(path);
    if (!table.window() || row == rows.end()) return false;
    std::vector<ContextMenu::Item> items;
    for (const UITableViewRowAction& action : actionsFor(path)) {
        const auto run = [weak = table.weak_from_this(), cell = std::weak_ptr(row->second.cell),
                          handler = action.handler] {
            const auto owner = std::static_pointer_cast<UITableView>(weak.lock());
            const auto shown = cell.lock();
            // The row may have moved or have been removed since the menu opened.
            const auto at = owner && shown ? owner->indexPathForCell(*shown) : std::nullopt;
            if (at && handler) handler(*at);
        };
        items.push_back({action.title, action.style == UITableViewRowAction::Style::destructive, run});
    }
    if (items.empty()) return false;
    endPress(false);
    closeSwipe(true);
    menu = ContextMenu::show(*table.window(), point, std::move(items), highlight);
    return true;
}

bool UITableView::Implementation::openSwipe(NSIndexPath path) {
    const auto row = rows.find(path);
    if (row == rows.end()) return false;
    if (swipe && swipe->cell == row->second.cell) return true;
    auto actions = actionsFor(path);
    if (actions.empty()) return false;
    closeSwipe(true);
    endPress(false);
    Swipe opened{.cell = row->second.cell, .actions = make<RowActionsView>(std::move(actions))};
    opened.actions->chosen = [this](std::size_t index) { runAction(index); };
    opened.actions->setFrame(rowFrame(path));
    const auto& place = opened.cell->place_;
    opened.actions->setCornerRadius(place.cornerRadius);
    opened.actions->setRoundedCorners(place.roundsTop, place.roundsBottom);
    const std::int64_t index = indexOfSubview(opened.cell.get());
    table.insertSubview(opened.actions, static_cast<std::size_t>(std::max<std::int64_t>(0, index)));
    swipe = std::move(opened);
    return true;
}

void UITableView::Implementation::setRevealed(CGFloat revealed, bool animated) {
    swipe->revealed = revealed;
    const auto change = [this] {
        const CGRect frame = swipe->cell->frame();
        swipe->cell->setFrame({rowX() - swipe->revealed, frame.minY(), frame.width(), frame.height()});
    };
    if (animated) {
        UIView::animate(swipeDuration, change, {}, UIViewAnimationCurve::easeOut);
    } else {
        change();
    }
}

void UITableView::Implementation::closeSwipe(bool animated) {
    if (!swipe) return;
    const bool isAnimated = animated && table.window();
    setRevealed(0, isAnimated);
    const auto actions = std::exchange(swipe, std::nullopt)->actions;
    actions->chosen = nullptr;
    actions->setUserInteractionEnabled(false);
    if (!isAnimated) return actions->removeFromSuperview();
    // The buttons are removed when the closed row covers them.
    RunLoop::main().performAfter(swipeDuration, [actions] { actions->removeFromSuperview(); });
}

void UITableView::Implementation::handleSwipe(UIPanGestureRecognizer& pan) {
    using State = UIGestureRecognizerState;
    if (pan.state() == State::began) {
        const auto path = table.indexPathForRowAtPoint(pan.locationInView(&table));
        if (!path || !openSwipe(*path)) return;
        swipe->startRevealed = swipe->revealed;
        swipe->isDragged = true;
    }
    if (!swipe || !swipe->isDragged) return;
    const CGFloat width = swipe->actions->width();
    const CGFloat wanted = std::max(0.0, swipe->startRevealed - pan.translation().x);
    setRevealed(wanted > width ? width + (wanted - width) * swipeResistance : wanted, false);
    if (pan.state() != State::ended && pan.state() != State::cancelled) return;
    swipe->isDragged = false;
    const CGFloat speed = pan.state() == State::cancelled ? swipeVelocity + 1 : pan.velocity().x;
    const bool opens = std::abs(speed) > swipeVelocity ? speed < 0 : swipe->revealed > width / 2;
    if (opens) {
        setRevealed(width, true);
    } else {
        closeSwipe(true);
    }
}

void UITableView::Implementation::runAction(std::size_t index) {
    const auto kept = table.shared_from_this();
    const auto path = pathOf(swipe->cell.get());
    const auto handler = swipe->actions->actions().at(index).handler;
    const auto keptActions = swipe->actions;
    closeSwipe(true);
    if (path && handler) handler(*path);
}

void UITableView::setSwipedRow(std::optional<NSIndexPath> path, bool animated) {
    if (!path) return implementation_->closeSwipe(animated);
    if (!implementation_->openSwipe(*path)) return;
    implementation_->setRevealed(implementation_->swipe->actions->width(), animated);
}

std::optional<NSIndexPath> UITableView::swipedRow() const {
    return implementation_->swipe ? implementation_->pathOf(implementation_->swipe->cell.get()) : std::nullopt;
}

// Keys

std::optional<NSIndexPath> UITableView::Implementation::focusedRow() const {
    const UIView* const focused = table.window() ? table.window()->focusedView() : nullptr;
    return focused && focused->isDescendantOfView(table) ? pathOf(focused) : std::nullopt;
}

bool UITableView::Implementation::moveFocusedRow(int step) {
    std::optional<NSIndexPath> target;
    if (const auto present = focusedRow()) {
        target = step > 0 ? heights.next(*present) : heights.previous(*present);
    } else {
        // Without a focused row, the focus begins at the first row that is entirely visible.
        const CGRect visible = table.bounds().insetBy(table.contentInset());
        for (const NSIndexPath path : table.indexPathsForVisibleRows()) {
            const CGRect frame = rowFrame(path);
            if (!target || frame.minY() < visible.minY()) target = path;
            if (frame.minY() >= visible.minY()) {
                target = path;
                break;
            }
        }
    }
    if (!target) return false;
    // The height of a row is known only after the row was made.
    for (int i = 0; i < 2; ++i) {
        table.scrollRectToVisible(rowFrame(*target), false);
        table.layoutIfNeeded();
        if (!exists(*target)) return true;
    }
    if (const auto row = rows.find(*target); row != rows.end())
        table.window()->setFocusedView(row->second.cell.get(), true);
    return true;
}

bool UITableView::Implementation::handleKey(const UIPress& press) {
    UIWindow* const window = table.window();
    // While text is edited, keys that the editor leaves unused do not operate the rows.
    if (!window || window->firstResponder()) return false;
    constexpr unsigned others = modifierControl | modifierAlternate | modifierCommand;
    if (press.key.modifiers & others) return false;
    const auto focused = focusedRow();
    const bool rowHasFocus = focused && rows.at(*focused).cell.get() == window->focusedView();
    switch (press.key.code) {
    case UIKeyCode::down: return moveFocusedRow(1);
    case UIKeyCode::up: return moveFocusedRow(-1);
    case UIKeyCode::enter:
        if (!rowHasFocus || press.isRepeat || !table.allowsSelection) return false;
        select(*focused);
        return true;
    case UIKeyCode::deleteBackward:
    case UIKeyCode::deleteForward: {
        if (!rowHasFocus || press.isRepeat) return false;
        for (const UITableViewRowAction& action : actionsFor(*focused)) {
            if (action.style != UITableViewRowAction::Style::destructive || !action.handler) continue;
            const auto handler = action.handler;
            const auto kept = table.shared_from_this();
            handler(*focused);
            return true;
        }
        return false;
    }
    case UIKeyCode::menu: {
        if (!focused) return false;
        const CGRect frame = rows.at(*focused).cell->frame();
        const CGPoint point = table.convertPointToView({frame.midX(), frame.midY()}, nullptr);
        return openMenu(*focused, point, ContextMenu::Highlight::first);
    }
    case UIKeyCode::escape:
        if (!swipe) return false;
        closeSwipe(true);
        return true;
    default: return false;
    }
}

bool UITableView::pressesBegan(const UIPress& press) {
    const auto kept = shared_from_this();
    return implementation_->handleKey(press) || UIScrollView::pressesBegan(press);
}

}  // namespace ostrel
