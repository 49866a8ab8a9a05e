#include "backends/qt/window/InputTranslation.h"

#include "backends/qt/system/QtConversions.h"

#include <cmath>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QStyleHints>
#include <QWheelEvent>

namespace ostrel {

namespace {

constexpr double pointsPerNotch = 60;
constexpr double unitsPerNotch = 120;

UIKeyCode toKeyCode(int key) {
    switch (key) {
    case Qt::Key_Tab:
    case Qt::Key_Backtab: return UIKeyCode::tab;
    case Qt::Key_Return:
    case Qt::Key_Enter: return UIKeyCode::enter;
    case Qt::Key_Escape: return UIKeyCode::escape;
    case Qt::Key_Space: return UIKeyCode::space;
    case Qt::Key_Left: return UIKeyCode::left;
    case Qt::Key_Right: return UIKeyCode::right;
    case Qt::Key_Up: return UIKeyCode::up;
    case Qt::Key_Down: return UIKeyCode::down;
    case Qt::Key_PageUp: return UIKeyCode::pageUp;
    case Qt::Key_PageDown: return UIKeyCode::pageDown;
    case Qt::Key_Home: return UIKeyCode::home;
    case Qt::Key_End: return UIKeyCode::end;
    case Qt::Key_Backspace: return UIKeyCode::deleteBackward;
    case Qt::Key_Delete: return UIKeyCode::deleteForward;
    case Qt::Key_Back: return UIKeyCode::back;
    case Qt::Key_Menu: return UIKeyCode::menu;
    case Qt::Key_F5: return UIKeyCode::f5;
    default: return UIKeyCode::other;
    }
}

}  // namespace

UIPress toPress(const QKeyEvent& event) {
    UIPress press;
    press.key.code = toKeyCode(event.key());
    press.key.characters = toUtf8(event.text());
    const Qt::KeyboardModifiers modifiers = event.modifiers();
    // Qt reports Shift and Tab as the key "Backtab", with or without the modifier.
    if (modifiers & Qt::ShiftModifier || event.key() == Qt::Key_Backtab) press.key.modifiers |= modifierShift;
    if (modifiers & Qt::ControlModifier) press.key.modifiers |= modifierControl;
    if (modifiers & Qt::AltModifier) press.key.modifiers |= modifierAlternate;
    if (modifiers & Qt::MetaModifier) press.key.modifiers |= modifierCommand;
    press.isRepeat = event.isAutoRepeat();
    return press;
}

UIScrollEvent toScrollEvent(const QWheelEvent& event) {
    UIScrollEvent scroll;
    scroll.location = {event.position().x(), event.position().y()};
    const QPoint angle = event.angleDelta(), pixels = event.pixelDelta();
    // On X11 the pixels depend on the driver (QWheelEvent::pixelDelta) and are not used; the angles are reliable.
    const bool usesPixels = !pixels.isNull() && QGuiApplication::platformName() != QLatin1String("xcb");
    if (usesPixels) {
        scroll.dx = pixels.x();
        scroll.dy = pixels.y();
        scroll.precise = true;
    } else {
        scroll.dx = angle.x() / unitsPerNotch * pointsPerNotch;
        scroll.dy = angle.y() / unitsPerNotch * pointsPerNotch;
        scroll.precise = angle.x() % 120 != 0 || angle.y() % 120 != 0;
    }
    return scroll;
}

Qt::CursorShape toCursor(CursorShape shape) {
    switch (shape) {
    case CursorShape::pointingHand: return Qt::PointingHandCursor;
    case CursorShape::text: return Qt::IBeamCursor;
    case CursorShape::arrow: break;
    }
    return Qt::ArrowCursor;
}

int TapCounter::press(QPointF point, double time, int button) {
    const QStyleHints& hints = *QGuiApplication::styleHints();
    const QPointF moved = point - point_;
    const double distance = std::max(std::abs(moved.x()), std::abs(moved.y()));
    const bool follows = button == button_ && time - time_ <= hints.mouseDoubleClickInterval() / 1000.0 &&
                         distance <= hints.mouseDoubleClickDistance();
    count_ = follows ? count_ + 1 : 1;
    point_ = point;
    time_ = time;
    button_ = button;
    return count_;
}

}  // namespace ostrel
