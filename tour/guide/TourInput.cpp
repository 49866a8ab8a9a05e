#include "tour/guide/TourInput.h"

#include <private/qhighdpiscaling_p.h>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <qpa/qplatformwindow.h>
#include <qpa/qwindowsysteminterface.h>
#include <QPointingDevice>
#include <QThread>

namespace ostrel {

namespace {
/// Shorter than any typist needs, and long enough for the window to show what a key changed, such as the focus.
constexpr int millisecondsBetweenKeys = 8;
}  // namespace

TourInput::TourInput(QQuickWindow& window)
    : window_(window),
      touchscreen_(new QPointingDevice("tour touchscreen", 1000, QInputDevice::DeviceType::TouchScreen,
                                       QPointingDevice::PointerType::Finger, QInputDevice::Capability::Position, 5,
                                       0)) {
    QWindowSystemInterface::registerInputDevice(touchscreen_);
}

TourInput::~TourInput() = default;

void TourInput::pass(int milliseconds) {
    QElapsedTimer since;
    since.start();
    do {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (milliseconds > 0) QThread::msleep(1);
    } while (since.elapsed() < milliseconds);
}

QPoint TourInput::native(CGPoint point) const {
    return QHighDpi::toNativeLocalPosition(QPointF(point.x, point.y), &window_).toPoint();
}

void TourInput::mouse(CGPoint point, Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type) {
    const QPointF local = native(point);
    QWindowSystemInterface::handleMouseEvent(&window_, local, window_.handle()->mapToGlobal(local.toPoint()), buttons,
                                             button, type);
}

void TourInput::moveMouse(CGPoint point) {
    mouse(point, Qt::NoButton, Qt::NoButton, QEvent::MouseMove);
    pass(1);
}

void TourInput::click(CGPoint point, Qt::MouseButton button, int milliseconds) {
    moveMouse(point);
    mouse(point, button, button, QEvent::MouseButtonPress);
    pass(milliseconds);
    mouse(point, Qt::NoButton, button, QEvent::MouseButtonRelease);
    pass(briefly);
}

void TourInput::drag(CGPoint from, CGPoint to, int milliseconds, int restFor, int steps) {
    moveMouse(from);
    mouse(from, Qt::LeftButton, Qt::LeftButton, QEvent::MouseButtonPress);
    for (int i = 1; i <= steps; ++i) {
        pass(std::max(1, milliseconds / steps));
        const double part = static_cast<double>(i) / steps;
        mouse({from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part}, Qt::LeftButton, Qt::NoButton,
              QEvent::MouseMove);
    }
    pass(restFor);
    mouse(to, Qt::NoButton, Qt::LeftButton, QEvent::MouseButtonRelease);
    pass(briefly);
}

void TourInput::wheel(CGPoint point, int notches) {
    const QPointF local = native(point);
    const QPointF global = window_.handle()->mapToGlobal(local.toPoint());
    const int step = notches > 0 ? 120 : -120;
    for (int i = 0; i < std::abs(notches); ++i) {
        QWindowSystemInterface::handleWheelEvent(&window_, local, global, {}, {0, step});
        pass(16);
    }
}

void TourInput::touch(CGPoint point, int state) {
    QWindowSystemInterface::TouchPoint touchPoint;
    touchPoint.id = 1;
    touchPoint.state = static_cast<QEventPoint::State>(state);
    touchPoint.pressure = state == QEventPoint::Released ? 0 : 1;
    const QPoint global = window_.handle()->mapToGlobal(native(point));
    touchPoint.area = QRectF(0, 0, 8, 8);
    touchPoint.area.moveCenter(global);
    QWindowSystemInterface::handleTouchEvent(&window_, touchscreen_, {touchPoint});
    pass(0);
}

void TourInput::tap(CGPoint point, int milliseconds) {
    touch(point, QEventPoint::Pressed);
    pass(milliseconds);
    touch(point, QEventPoint::Released);
    pass(briefly);
}

void TourInput::swipe(CGPoint from, CGPoint to, int milliseconds, int restFor, int steps) {
    touch(from, QEventPoint::Pressed);
    for (int i = 1; i <= steps; ++i) {
        pass(std::max(1, milliseconds / steps));
        const double part = static_cast<double>(i) / steps;
        touch({from.x + (to.x - from.x) * part, from.y + (to.y - from.y) * part}, QEventPoint::Updated);
    }
    if (restFor > 0) pass(restFor);
    touch(to, QEventPoint::Released);
}

void TourInput::key(int key, const QString& text, Qt::KeyboardModifiers modifiers) {
    QWindowSystemInterface::handleKeyEvent(&window_, QEvent::KeyPress, key, modifiers, text);
    pass(0);
    QWindowSystemInterface::handleKeyEvent(&window_, QEvent::KeyRelease, key, modifiers, text);
    pass(millisecondsBetweenKeys);
}

void TourInput::type(const std::string& text) {
    for (const QChar character : QString::fromStdString(text)) {
        const int code = character.isLetter() ? character.toUpper().unicode() : character.unicode();
        key(code, QString(character), character.isUpper() ? Qt::ShiftModifier : Qt::NoModifier);
    }
}

}  // namespace ostrel
