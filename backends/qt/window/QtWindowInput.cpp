// The part of the window's view that takes input.

#include "backends/qt/window/QtTransfer.h"
#include "backends/qt/window/QtWindowView.h"
#include "platform/foundation/runloop/Clock.h"
#include "platform/uikit/view/UIWindow.h"

#include <algorithm>
#include <QCursor>
#include <QDropEvent>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QTouchEvent>
#include <QWheelEvent>

namespace ostrel {

namespace {

double inputTime() { return Clock::shared().monotonicSeconds(); }

CGPoint toPoint(QPointF point) { return {point.x(), point.y()}; }

/// The system made the mouse event from a touch, which has already been handled.
bool isFromTouch(const QMouseEvent& event) {
    return event.source() != Qt::MouseEventNotSynthesized ||
           event.deviceType() == QInputDevice::DeviceType::TouchScreen;
}

/// The key is a modifier. A modifier alone is not sent: the next key's press carries it.
bool isModifier(int key) {
    switch (key) {
    case Qt::Key_Shift:
    case Qt::Key_Control:
    case Qt::Key_Meta:
    case Qt::Key_Alt:
    case Qt::Key_AltGr:
    case Qt::Key_CapsLock:
    case Qt::Key_NumLock: return true;
    default: return false;
    }
}

}  // namespace

void QtWindowView::sendPointer(UITouchPhase phase, QPointF point) {
    pointer_.phase = phase;
    pointer_.location = toPoint(point);
    pointer_.timestamp = inputTime();
    window_->sendTouch(pointer_);
}

void QtWindowView::mousePressEvent(QMouseEvent* event) {
    if (!window_ || isFromTouch(*event)) {
        event->ignore();
        return;
    }
    event->accept();
    // A second button that goes down during a gesture is ignored.
    if (pointerDown_) return;
    pointer_ = {};
    pointer_.type = UITouchType::pointer;
    pointer_.button = event->button() == Qt::RightButton ? UIButtonMask::secondary : UIButtonMask::primary;
    pointer_.startLocation = toPoint(event->position());
    pointer_.startTimestamp = inputTime();
    pointer_.tapCount = taps_.press(event->position(), pointer_.startTimestamp, event->button());
    pointerDown_ = true;
    lastPress_ = event->position();
    lastPressTime_ = pointer_.startTimestamp;
    sendPointer(UITouchPhase::began, event->position());
}

void QtWindowView::mouseMoveEvent(QMouseEvent* event) {
    if (window_ && pointerDown_) sendPointer(UITouchPhase::moved, event->position());
}

void QtWindowView::mouseReleaseEvent(QMouseEvent* event) {
    const Qt::MouseButton button = pointer_.button == UIButtonMask::secondary ? Qt::RightButton : Qt::LeftButton;
    if (!window_ || !pointerDown_ || event->button() != button) return;
    pointerDown_ = false;
    lastPressTime_ = inputTime();
    sendPointer(UITouchPhase::ended, event->position());
    updateCursor(event->position());
}

void QtWindowView::mouseDoubleClickEvent(QMouseEvent* event) {
    // Qt also sends a press for each double click, and `TapCounter` counts the presses.
    event->accept();
}

void QtWindowView::mouseUngrabEvent() {
    if (!window_ || !pointerDown_) return;
    pointerDown_ = false;
    sendPointer(UITouchPhase::cancelled, {pointer_.location.x, pointer_.location.y});
}

void QtWindowView::touchEvent(QTouchEvent* event) {
    if (!window_) {
        event->ignore();
        return;
    }
    event->accept();
    if (event->type() == QEvent::TouchCancel) {
        cancelFingers();
        return;
    }
    const double time = inputTime();
    for (const QEventPoint& point : event->points()) {
        // Fingers have identifiers from 1; the pointer has 0.
        const std::int64_t identifier = std::int64_t(point.id()) + 1;
        auto finger = std::find_if(fingers_.begin(), fingers_.end(),
                                   [&](const UITouch& touch) { return touch.identifier == identifier; });
        if (point.state() == QEventPoint::Pressed) {
            if (finger != fingers_.end()) fingers_.erase(finger);
            UITouch touch;
            touch.identifier = identifier;
            touch.startLocation = touch.location = toPoint(point.position());
            touch.startTimestamp = touch.timestamp = time;
            touch.tapCount = taps_.press(point.position(), time, -2);
            fingers_.push_back(touch);
            lastPress_ = point.position();
            lastPressTime_ = time;
            window_->sendTouch(touch);
            continue;
        }
        if (finger == fingers_.end()) continue;
        finger->timestamp = time;
        finger->location = toPoint(point.position());
        if (point.state() == QEventPoint::Released) {
            UITouch touch = *finger;
            touch.phase = UITouchPhase::ended;
            fingers_.erase(finger);
            lastPressTime_ = time;
            window_->sendTouch(touch);
        } else if (point.state() == QEventPoint::Updated) {
            finger->phase = UITouchPhase::moved;
            window_->sendTouch(*finger);
        }
    }
}

void QtWindowView::touchUngrabEvent() { cancelFingers(); }

void QtWindowView::cancelFingers() {
    if (!window_) return;
    for (UITouch& touch : std::exchange(fingers_, {})) {
        touch.phase = UITouchPhase::cancelled;
        touch.timestamp = inputTime();
        window_->sendTouch(touch);
    }
}

void QtWindowView::wheelEvent(QWheelEvent* event) {
    if (!window_) {
        event->ignore();
        return;
    }
    event->accept();
    UIScrollEvent scroll = toScrollEvent(*event);
    if (scroll.dx == 0 && scroll.dy == 0) return;
    scroll.timestamp = inputTime();
    window_->sendScroll(scroll);
}

bool QtWindowView::eventFilter(QObject* object, QEvent* event) {
    // Qt searches the item under the pointer with every frame; hover events stay off while no pointer is in the window.
    switch (event->type()) {
    case QEvent::Enter:
    case QEvent::MouseMove:
        if (!acceptHoverEvents()) setAcceptHoverEvents(true);
        break;
    case QEvent::Leave:
        if (acceptHoverEvents()) {
            setAcceptHoverEvents(false);
            if (window_) window_->sendHover({}, false);
        }
        break;
    default: break;
    }
    return QQuickItem::eventFilter(object, event);
}

void QtWindowView::hoverMoveEvent(QHoverEvent* event) {
    if (!window_ || pointerDown_) return;
    window_->sendHover(toPoint(event->position()), true);
    updateCursor(event->position());
}

void QtWindowView::hoverLeaveEvent(QHoverEvent* event) {
    if (window_) window_->sendHover(toPoint(event->position()), false);
}

void QtWindowView::updateCursor(QPointF point) {
    CursorShape shape = CursorShape::arrow;
    for (const UIView* view = window_->hitTest(toPoint(point)); view; view = view->superview()) {
        shape = view->state().cursor;
        if (shape != CursorShape::arrow) break;
    }
    const Qt::CursorShape wanted = toCursor(shape);
    if (cursor().shape() != wanted) setCursor(wanted);
}

void QtWindowView::keyPressEvent(QKeyEvent* event) {
    event->setAccepted(window_ && !isModifier(event->key()) && sendKey(*event));
}

bool QtWindowView::sendKey(const QKeyEvent& event) {
    UIPress press = toPress(event);
    press.timestamp = inputTime();
    return window_->sendKey(press);
}

void QtWindowView::dragEnterEvent(QDragEnterEvent* event) { dragMoveEvent(event); }

void QtWindowView::dragMoveEvent(QDragMoveEvent* event) {
    // The drop is a copy, never a move: the other program must keep its file.
    const bool isTaken = window_ && window_->sendDrag(transferItems(event->mimeData()), toPoint(event->position()));
    if (isTaken) event->setDropAction(Qt::CopyAction);
    event->setAccepted(isTaken);
}

void QtWindowView::dragLeaveEvent(QDragLeaveEvent*) {
    if (window_) window_->sendDragExited();
}

void QtWindowView::dropEvent(QDropEvent* event) {
    const CGPoint point = toPoint(event->position());
    const bool isTaken = window_ && window_->sendDrag(transferItems(event->mimeData()), point);
    if (window_) window_->sendDragExited();
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(isTaken);
    if (!isTaken) return;
    transferItemsWithPicture(event->mimeData(), [weak = std::weak_ptr(window_), point](const UITransferItems& items) {
        if (const auto window = weak.lock()) window->sendDrop(items, point);
    });
}

}  // namespace ostrel
