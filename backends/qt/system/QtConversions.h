#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/graphics/UIColor.h"

#include <QColor>
#include <QRectF>
#include <QString>
#include <string>
#include <string_view>

namespace ostrel {

inline QString toQString(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

inline std::string toUtf8(const QString& text) { return text.toStdString(); }

inline QColor toQColor(const UIColor& color) {
    const auto part = [](float value) { return std::clamp(value, 0.0f, 1.0f); };
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue), part(color.alpha));
}

inline QRectF toQRectF(const CGRect& rect) { return {rect.minX(), rect.minY(), rect.width(), rect.height()}; }

}  // namespace ostrel
