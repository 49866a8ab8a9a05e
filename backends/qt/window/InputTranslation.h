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

/// Converts Qt's events to those of the view tree. The caller sets the times.
UIPress toPress(const QKeyEvent& event);
/// Wheels scroll 60 points a notch (QWheelEvent: 120 eighths of a degree). Trackpads scroll by their pixels where Qt
/// reports them.
UIScrollEvent toScrollEvent(const QWheelEvent& event);
Qt::CursorShape toCursor(CursorShape shape);

/// Counts presses that follow each other at one place, by the system's time and distance for double clicks.
class TapCounter final {
public:
    /// The number of the press, from 1. `time`: seconds.
    int press(QPointF point, double time, int button);

private:
    QPointF point_;
    double time_ = -1e9;
    int button_ = -1;
    int count_ = 0;
};

}  // namespace ostrel
