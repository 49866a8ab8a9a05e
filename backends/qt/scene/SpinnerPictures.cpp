#include "backends/qt/scene/SpinnerPictures.h"

#include "backends/qt/system/QtConversions.h"

#include <algorithm>
#include <cmath>
#include <QPainter>

namespace ostrel {

namespace {

constexpr int spokes = 8;
constexpr std::size_t maximumPictures = 64;

int progressStep(const SpinnerContent& spinner) {
    return spinner.animating ? 255 : static_cast<int>(std::lround(std::clamp(spinner.progress, 0.0, 1.0) * 64));
}

/// `strength` returns the opacity of a spoke; spoke 0 points up, the others follow clockwise.
template <class Strength>
void paintWheel(QPainter& painter, double side, QColor color, Strength strength) {
    const double thickness = side * 0.105, inner = side * 0.235, outer = side * 0.47 - thickness / 2;
    const float alpha = color.alphaF();
    painter.save();
    painter.translate(side / 2, side / 2);
    for (int i = 0; i < spokes; ++i) {
        color.setAlphaF(static_cast<float>(alpha * strength(i)));
        if (color.alpha() > 0) {
            painter.setPen(QPen(color, thickness, Qt::SolidLine, Qt::RoundCap));
            painter.drawLine(QPointF(0, -inner), QPointF(0, -outer));
        }
        painter.rotate(360.0 / spokes);
    }
    painter.restore();
}

}  // namespace

std::uint64_t SpinnerPictures::keyFor(const SpinnerContent& spinner, int side) {
    const std::uint64_t color = toQColor(spinner.color).rgba();
    return color << 32 | static_cast<std::uint64_t>(side & 0xFFFF) << 8 |
           static_cast<std::uint64_t>(progressStep(spinner));
}

const QImage& SpinnerPictures::picture(const SpinnerContent& spinner, int side) {
    const std::uint64_t key = keyFor(spinner, side);
    const auto found = pictures_.find(key);
    if (found != pictures_.end()) return found->second;
    if (pictures_.size() >= maximumPictures) pictures_.clear();

    QImage image(QSize(spinner.animating ? side * phaseCount : side, side), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor color = toQColor(spinner.color);
    if (spinner.animating) {
        for (int phase = 0; phase < phaseCount; ++phase) {
            const double leading = double(phase) * spokes / phaseCount;
            paintWheel(painter, side, color, [&](int spoke) {
                const double behind = std::fmod(leading - spoke + spokes, spokes);
                return 1 - 0.82 * behind / spokes;
            });
            painter.translate(side, 0);
        }
    } else {
        const double drawn = progressStep(spinner) / 64.0 * spokes;
        paintWheel(painter, side, color, [&](int spoke) { return std::clamp(drawn - spoke, 0.0, 1.0); });
    }
    painter.end();
    return pictures_[key] = image;
}

}  // namespace ostrel
