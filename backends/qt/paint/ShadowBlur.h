#pragma once

#include <QColor>
#include <QImage>
#include <QPainterPath>
#include <QSize>

namespace ostrel {

/// `shape` filled in `color` and blurred as a Gaussian of standard deviation `sigma` (pixels) would, by three box blurs;
/// an image of `size` pixels, premultiplied.
QImage blurredShape(const QPainterPath& shape, QSize size, double sigma, const QColor& color);

}  // namespace ostrel
