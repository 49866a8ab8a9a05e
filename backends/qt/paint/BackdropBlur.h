#pragma once

#include <QImage>

namespace ostrel {

/// `image` (RGB32 or ARGB32_Premultiplied) blurred nearly as by a Gaussian of standard deviation `sigma` (pixels): the
/// picture is reduced up to eight times, which a blurred picture does not show, and then blurred by three box blurs.
/// Beyond the edges the pixels of the edge are repeated. Returns the reduced picture, which the caller shows smoothly
/// enlarged. Any thread.
QImage blurredBackdrop(const QImage& image, double sigma);

}  // namespace ostrel
