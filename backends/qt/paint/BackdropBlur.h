#pragma once

#include <QImage>

namespace ostrel {

/// `image` (RGB32 or ARGB32_Premultiplied) blurred as a Gaussian of standard deviation `sigma` (pixels) would, by three
/// box blurs of a picture made up to eight times smaller first: what is blurred that much shows nothing of it. The edges
/// go on as they are. The result is the smaller picture, to be shown smoothly enlarged. Any thread.
QImage blurredBackdrop(const QImage& image, double sigma);

}  // namespace ostrel
