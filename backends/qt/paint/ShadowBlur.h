#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QSize>

namespace ostrel {

/// `shape` filled in `color` and blurred nearly as by a Gaussian of standard deviation `sigma` (pixels), by three box
/// blurs. Returns a premultiplied image of `size` pixels.
QImage blurredShape(const QPainterPath& shape, QSize size, double sigma, const QColor& color);

}  // namespace ostrel
