#pragma once

#include "platform/graphics/Geometry.h"

#include <QQuickWindow>

#include <string>
#include <vector>

class QPointingDevice;

namespace ostrel {

/// Sends events through Qt's window system interface, so that Qt handles them like those of a real device. Points are
/// in the coordinates of the window, times in milliseconds. Main thread.
class TourInput final {
public:
    /// How long a button or a finger stays down.
    static constexpr int briefly = 30;

    explicit TourInput(QQuickWindow& window);
    ~TourInput();

    void click(CGPoint point, Qt::MouseButton button = Qt::LeftButton, int milliseconds = briefly);
    void moveMouse(CGPoint point);
    void wheel(CGPoint point, int notches);
    void tap(CGPoint point, int milliseconds = briefly);
    /// One finger from `from` to `to` in `steps` moves, `milliseconds` in all; it rests at the end for `restFor`.
    void swipe(CGPoint from, CGPoint to, int milliseconds, int restFor = 0, int steps = 12);
    /// The same with the left button of the mouse.
    void drag(CGPoint from, CGPoint to, int milliseconds, int restFor = 0, int steps = 12);
    void key(int key, const QString& text = {}, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
    void type(const std::string& text);
    /// Runs the event loop for a while.
    static void pass(int milliseconds);

private:
    void mouse(CGPoint point, Qt::MouseButtons buttons, Qt::MouseButton button, QEvent::Type type);
    void touch(CGPoint point, int state);
    QPoint native(CGPoint point) const;
    QQuickWindow& window_;
    QPointingDevice* touchscreen_;
};

}  // namespace ostrel
