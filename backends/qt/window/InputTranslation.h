#pragma once

#include "platform/uikit/events/UIEvent.h"
#include "platform/uikit/mounting/Mounting.h"

#include <QCursor>
#include <QPointF>

QT_BEGIN_NAMESPACE
class QKeyEvent;
class QWheelEvent;
QT_END_NAMESPACE

namespace ostrel {

/// Qt's events in the terms of the view tree. Times are left to the caller.
UIPress toPress(const QKeyEvent& event);
/// Wheels: 60 points a notch (QWheelEvent: 120 eighths of a degree). Trackpads: their own pixels where they tell them.
UIScrollEvent toScrollEvent(const QWheelEvent& event);
Qt::CursorShape toCursor(CursorShape shape);

/// Counts presses that follow each other in time and place, by the system's settings for double clicks.
class TapCounter final {
public:
    /// `time` in seconds. 1 for a first press, 2 for a second …
    int press(QPointF point, double time, int button);

private:
    QPointF point_;
    double time_ = -1e9;
    int button_ = -1;
    int count_ = 0;
};

}  // namespace ostrel
