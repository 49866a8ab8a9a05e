#include "backends/qt/paint/BackdropBlur.h"
#include "backends/qt/paint/DisplayList.h"
#include "backends/qt/paint/PictureStore.h"
#include "backends/qt/paint/ShadowBlur.h"
#include "backends/qt/system/QtConversions.h"
#include "backends/qt/text/QtFonts.h"
#include "backends/qt/text/TextBlock.h"

#include <algorithm>
#include <cmath>
#include <QPainter>
#include <QPainterPath>

namespace ostrel {

namespace {

/// The colour behind selected text: a blue so transparent that text of any colour stays readable.
const QColor selectionColor(0, 122, 255, 71);

QTransform toQTransform(const CGAffineTransform& t, CGPoint center) {
    QTransform result;
    result.translate(center.x, center.y);
    result = QTransform(t.a, t.b, t.c, t.d, t.tx, t.ty) * result;
    QTransform back;
    back.translate(-center.x, -center.y);
    return back * result;
}

/// The outline of a view, moved inwards by `inset` points.
QPainterPath outlineOf(const ViewState& state, double inset = 0) {
    const QRectF r = QRectF(0, 0, state.frame.width(), state.frame.height()).adjusted(inset, inset, -inset, -inset);
    return roundedPath(r, state.cornerRadius - inset, state.roundsTop, state.roundsBottom);
}

bool isRounded(const ViewState& state) { return state.cornerRadius > 0 && (state.roundsTop || state.roundsBottom); }

QPainterPath toQPainterPath(const Path& path) {
    QPainterPath result;
    for (const Path::Element& e : path.elements) {
        switch (e.verb) {
        case Path::Verb::moveTo: result.moveTo(e.p1.x, e.p1.y); break;
        case Path::Verb::lineTo: result.lineTo(e.p1.x, e.p1.y); break;
        case Path::Verb::cubicTo: result.cubicTo(e.p1.x, e.p1.y, e.p2.x, e.p2.y, e.p3.x, e.p3.y); break;
        case Path::Verb::close: result.closeSubpath(); break;
        case Path::Verb::ellipse: result.addEllipse(QPointF(e.p1.x, e.p1.y), e.p2.x, e.p2.y); break;
        }
    }
    return result;
}

class ListPainter {
public:
    ListPainter(const DisplayList& list, QImage& target, QPoint origin)
        : list_(list), target_(target), origin_(origin) {
        painter_.begin(&target_);
        painter_.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing | QPainter::SmoothPixmapTransform);
        painter_.translate(list.margin - origin.x(), list.margin - origin.y());
        painter_.scale(list.scale, list.scale);
    }

    void paintRoot() {
        const ViewState& root = state(0);
        if (list_.beneath) {
            const auto pixels = [&](double points) { return static_cast<int>(std::lround(points * list_.scale)); };
            const QPoint origin(pixels(list_.beneathOrigin.x), pixels(list_.beneathOrigin.y));
            painter_.save();
            painter_.resetTransform();
            painter_.drawImage(0, 0, paintDisplayList(*list_.beneath, QRect(origin + origin_, target_.size())));
            painter_.restore();
        }
        const bool cuts = root.clipsToBounds && isRounded(root) && list_.entries.size() > 1;
        const bool hasShadow = !root.shadow.color.isClear();
        if (!cuts) {
            paintBody(painter_, 0);
        } else if (hasShadow) {
            paintGroup(painter_, 0, 1);
        } else {
            // Nothing is painted below the root, so its corners can be cut afterwards, without a picture in between.
            paintLayer(painter_, 0, false);
            paintContent(painter_, 0);
            paintChildren(painter_, 0);
            cutCorners(QRectF(0, 0, root.frame.width(), root.frame.height()), outlineOf(root));
            paintBorder(painter_, root);
        }
        if (const auto& clip = list_.corners) {
            const QRectF rect = toQRectF(clip->rect);
            cutCorners(rect, roundedPath(rect, clip->radius, clip->roundsTop, clip->roundsBottom));
        }
    }

private:
    const ViewState& state(std::size_t index) const { return *list_.entries[index].state; }

    void paintEntry(QPainter& painter, std::size_t index, CGPoint parentOrigin) {
        const ViewState& view = state(index);
        if (view.hidden || view.alpha <= 0.003) return;
        painter.save();
        painter.translate(view.frame.minX() - parentOrigin.x, view.frame.minY() - parentOrigin.y);
        if (!view.transform.isIdentity()) {
            const CGPoint center{view.frame.width() / 2, view.frame.height() / 2};
            painter.setTransform(toQTransform(view.transform, center), true);
        }
        const bool hasChildren = list_.entries[index].end > index + 1;
        const bool masks = hasChildren && view.clipsToBounds && isRounded(view);
        if (masks || (view.alpha < 1 && hasChildren)) {
            paintGroup(painter, index, view.alpha);
        } else {
            painter.setOpacity(painter.opacity() * view.alpha);
            paintBody(painter, index);
        }
        painter.restore();
    }

    void paintBody(QPainter& painter, std::size_t index) {
        const ViewState& view = state(index);
        paintShadow(painter, view);
        paintLayer(painter, index, true);
        paintContent(painter, index);
        const bool hasChildren = list_.entries[index].end > index + 1;
        if (hasChildren) {
            if (view.clipsToBounds) {
                painter.save();
                painter.setClipRect(QRectF(0, 0, view.frame.width(), view.frame.height()), Qt::IntersectClip);
            }
            paintChildren(painter, index);
            if (view.clipsToBounds) painter.restore();
        }
        paintBorder(painter, view);
    }

    void paintChildren(QPainter& painter, std::size_t index) {
        const CGPoint origin = state(index).boundsOrigin;
        for (std::size_t i = index + 1; i < list_.entries[index].end; i = list_.entries[i].end) {
            paintEntry(painter, i, origin);
        }
    }

    /// Paints a subtree into a picture of its own, then draws that picture with `alpha`, within round corners when the
    /// view clips.
    void paintGroup(QPainter& painter, std::size_t index, double alpha) {
        const ViewState& view = state(index);
        paintShadow(painter, view);
        const QTransform transform = painter.transform();
        QRect area(0, 0, target_.width(), target_.height());
        if (view.clipsToBounds) {
            const QRectF bounds(0, 0, view.frame.width(), view.frame.height());
            area &= transform.mapRect(bounds).toAlignedRect();
        }
        if (area.isEmpty()) return;
        QImage layer(area.size(), QImage::Format_ARGB32_Premultiplied);
        layer.fill(Qt::transparent);
        QPainter inner(&layer);
        inner.setRenderHints(painter.renderHints());
        inner.setTransform(transform * QTransform::fromTranslate(-area.x(), -area.y()));
        paintLayer(inner, index, false);
        paintContent(inner, index);
        paintChildren(inner, index);
        if (view.clipsToBounds) {
            QPainterPath outside;
            outside.addRect(QRectF(-1, -1, view.frame.width() + 2, view.frame.height() + 2));
            inner.setCompositionMode(QPainter::CompositionMode_DestinationOut);
            inner.fillPath(outside.subtracted(outlineOf(view)), Qt::black);
            inner.setCompositionMode(QPainter::CompositionMode_SourceOver);
        }
        paintBorder(inner, view);
        inner.end();
        painter.save();
        painter.resetTransform();
        painter.setOpacity(painter.opacity() * alpha);
        painter.drawImage(area.topLeft(), layer);
        painter.restore();
    }

    void cutCorners(const QRectF& rect, const QPainterPath& inside) {
        QPainterPath outside;
        outside.addRect(rect.adjusted(-1, -1, 1, 1));
        const QPainterPath corners = outside.subtracted(inside);
        painter_.save();
        if (!list_.isOpaque) painter_.setCompositionMode(QPainter::CompositionMode_DestinationOut);
        painter_.fillPath(corners, list_.isOpaque ? toQColor(list_.ground) : QColor(Qt::black));
        painter_.restore();
    }

    void paintShadow(QPainter& painter, const ViewState& view) {
        const LayerShadow& shadow = view.shadow;
        if (shadow.color.isClear()) return;
        const double scale = list_.scale;
        const int margin = static_cast<int>(std::ceil(shadow.radius * 2 * scale)) + 1;
        const QSize size(static_cast<int>(std::ceil(view.frame.width() * scale)) + 2 * margin,
                         static_cast<int>(std::ceil(view.frame.height() * scale)) + 2 * margin);
        if (size.width() > 8192 || size.height() > 8192) return;
        QTransform toPixels;
        toPixels.translate(margin, margin);
        toPixels.scale(scale, scale);
        const QImage blurred =
            blurredShape(toPixels.map(outlineOf(view)), size, shadow.radius * scale, toQColor(shadow.color));
        painter.drawImage(QRectF(shadow.offset.x - margin / scale, shadow.offset.y - margin / scale,
                                 size.width() / scale, size.height() / scale),
                          blurred);
    }

    void paintLayer(QPainter& painter, std::size_t index, bool rounds) {
        const ViewState& view = state(index);
        if (view.backgroundColor.isClear()) return;
        const QColor color = toQColor(view.backgroundColor);
        if (rounds && isRounded(view)) {
            painter.fillPath(outlineOf(view), color);
            return;
        }
        const QRectF rect(0, 0, view.frame.width(), view.frame.height());
        painter.fillRect(snapped(painter, rect), color);
    }

    void paintBorder(QPainter& painter, const ViewState& view) {
        if (!(view.borderWidth > 0) || view.borderColor.isClear()) return;
        const double width = std::min({view.borderWidth, view.frame.width() / 2, view.frame.height() / 2});
        QPen pen(toQColor(view.borderColor), width);
        pen.setJoinStyle(Qt::MiterJoin);
        painter.strokePath(outlineOf(view, width / 2), pen);
    }

    /// `rect` with its edges on device pixels, at least one pixel apart, so that neighbours meet and hairlines stay
    /// sharp.
    QRectF snapped(const QPainter& painter, const QRectF& rect) const {
        const QTransform& transform = painter.transform();
        if (transform.type() > QTransform::TxScale) return rect;
        const QRectF device = transform.mapRect(rect);
        double left = std::round(device.left()), right = std::round(device.right());
        double top = std::round(device.top()), bottom = std::round(device.bottom());
        if (left == right && device.width() > 0) right = (left = std::floor(device.left())) + 1;
        if (top == bottom && device.height() > 0) bottom = (top = std::floor(device.top())) + 1;
        return transform.inverted().mapRect(QRectF(left, top, right - left, bottom - top));
    }

    void paintContent(QPainter& painter, std::size_t index) {
        const ViewState& view = state(index);
        if (const auto* text = std::get_if<TextContent>(&view.content)) {
            paintText(painter, view, *text);
        } else if (const auto* image = std::get_if<ImageContent>(&view.content)) {
            if (image->image) paintImage(painter, index, *image);
        } else if (const auto* input = std::get_if<TextInputContent>(&view.content)) {
            if (isPainted(*input)) paintInput(painter, view, *input);
        } else if (const auto* blur = std::get_if<BlurContent>(&view.content)) {
            paintBlur(painter, view, *blur);
        }
    }

    /// Blurs what has been painted so far. In a picture that is painted in bands, only the pixels of the same band are
    /// blurred; in a turned view, only those of its own picture.
    void paintBlur(QPainter& painter, const ViewState& view, const BlurContent& content) {
        const auto* beneath = static_cast<const QImage*>(painter.device());
        const QRectF bounds(0, 0, view.frame.width(), view.frame.height());
        const QRect area = painter.transform().mapRect(bounds).toRect() & beneath->rect();
        if (area.isEmpty()) return;
        painter.save();
        painter.setClipPath(outlineOf(view), Qt::IntersectClip);
        const QImage blurred = blurredBackdrop(beneath->copy(area), content.radius * list_.scale);
        painter.save();
        painter.resetTransform();
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(QRectF(area), blurred);
        painter.restore();
        painter.fillRect(bounds, toQColor(content.tint));
        painter.restore();
    }

    /// The largest scale, not below the content's minimum scale, at which the text fits on one line of this width.
    static double fittingScale(const TextContent& content, double width) {
        TextBlock::Options oneLine;
        oneLine.width = width / content.minimumScale;
        oneLine.maximumLines = 1;
        oneLine.lineBreakMode = NSLineBreakMode::byTruncatingTail;
        // Qt loads fonts in whole pixel sizes only, so the size shrinks in steps of one.
        const double size = content.font.pointSize, least = size * content.minimumScale;
        for (double tried = size; tried > least;) {
            const TextBlock whole(content.text, qtFont(content.font, tried / size), oneLine);
            const double needed = whole.size().width();
            if (whole.isTruncated()) break;
            if (needed <= width) return tried / size;
            tried = std::floor(std::min(tried * width / needed, tried - 1));
        }
        return content.minimumScale;
    }

    void paintText(QPainter& painter, const ViewState& view, const TextContent& content) {
        if (content.text.empty() || content.color.isClear()) return;
        const QRectF box = toQRectF(CGRect({}, view.frame.size).insetBy(content.insets));
        if (box.width() <= 0 || box.height() <= 0) return;
        TextBlock::Options options;
        options.width = box.width();
        options.height = box.height();
        options.maximumLines = std::max(0, content.numberOfLines);
        options.lineBreakMode = content.lineBreakMode;
        options.onlyWholeLines = content.onlyWholeLines;
        options.alignment = content.alignment;
        QFont font = qtFont(content.font);
        if (content.minimumScale < 1 && content.minimumScale > 0) {
            font = qtFont(content.font, fittingScale(content, box.width()));
        }
        TextBlock block(content.text, font, options);
        const double free = box.height() - block.size().height();
        double y = box.y();
        // A text of several lines that is higher than its box is aligned to the top and cut at the bottom.
        const bool overflows = free < -1 && block.lineCount() > 1;
        if (content.vertical == TextContent::Vertical::center && !overflows) y += free / 2;
        painter.save();
        if (overflows) {
            painter.setClipRect(QRectF(0, 0, view.frame.width(), view.frame.height()), Qt::IntersectClip);
        }
        if (content.selectionEnd > content.selectionBegin) {
            const QRectF seen = visible(painter);
            const auto covered = block.coverOf(TextBlock::unitsOf(content.text, content.selectionBegin),
                                               TextBlock::unitsOf(content.text, content.selectionEnd), seen.top() - y,
                                               seen.bottom() - y);
            for (const QRectF& part : covered) {
                painter.fillRect(snapped(painter, part.translated(box.x(), y)), selectionColor);
            }
        }
        painter.setPen(toQColor(content.color));
        block.draw(painter, {box.x(), y}, visible(painter));
        painter.restore();
    }

    void paintInput(QPainter& painter, const ViewState& view, const TextInputContent& input) {
        TextContent text;
        const bool isEmpty = input.text.empty();
        text.text = isEmpty ? input.placeholder : input.text;
        if (!isEmpty && input.secure) {
            text.text.clear();
            for (qsizetype i = 0; i < toQString(input.text).size(); ++i) text.text += "\u2022";
        }
        text.font = !isEmpty && input.secure ? bulletFont(input.font) : input.font;
        text.color = isEmpty ? input.placeholderColor : input.color;
        text.alignment = input.alignment;
        text.lineBreakMode = input.multiline ? NSLineBreakMode::byWordWrapping : NSLineBreakMode::byTruncatingTail;
        text.numberOfLines = input.multiline ? 0 : 1;
        text.vertical = input.multiline ? TextContent::Vertical::top : TextContent::Vertical::center;
        text.insets = input.insets;
        paintText(painter, view, text);
    }

    void paintImage(QPainter& painter, std::size_t index, const ImageContent& content) {
        const ViewState& view = state(index);
        const CGRect placed = placedImage(content.image->size(), view.frame.size, content.contentMode);
        if (placed.isEmpty()) return;
        if (content.image->isSymbol()) {
            paintSymbol(painter, *content.image->path(), placed, content.tint);
            return;
        }
        const DisplayEntry& entry = list_.entries[index];
        if (entry.pictureMissing) return;
        QImage picture = entry.picture;
        if (picture.isNull() && list_.pictures) {
            const PictureKey key =
                PictureStore::keyFor(*content.image, placed.width() * list_.scale, placed.height() * list_.scale);
            picture = list_.pictures->obtain(*content.image, key);
        }
        if (picture.isNull()) return;
        const QRectF bounds(0, 0, view.frame.width(), view.frame.height());
        QRectF target = toQRectF(placed);
        if (painter.transform().type() <= QTransform::TxScale) {
            // A picture that is shown pixel by pixel is not smoothed.
            const QRectF device = painter.transform().mapRect(target);
            if (std::abs(device.width() - picture.width()) < 1 && std::abs(device.height() - picture.height()) < 1) {
                const QRectF whole(std::round(device.x()), std::round(device.y()), picture.width(), picture.height());
                target = painter.transform().inverted().mapRect(whole);
            }
        }
        if (view.clipsToBounds && isRounded(view)) {
            QBrush brush(picture);
            QTransform place;
            place.translate(target.x(), target.y());
            place.scale(target.width() / picture.width(), target.height() / picture.height());
            brush.setTransform(place);
            QPainterPath path = outlineOf(view);
            if (!target.adjusted(-0.5, -0.5, 0.5, 0.5).contains(bounds)) {
                QPainterPath rect;
                rect.addRect(target);
                path = path.intersected(rect);
            }
            painter.fillPath(path, brush);
        } else if (view.clipsToBounds && !bounds.contains(target)) {
            painter.save();
            painter.setClipRect(bounds, Qt::IntersectClip);
            painter.drawImage(target, picture);
            painter.restore();
        } else {
            painter.drawImage(target, picture);
        }
    }

    void paintSymbol(QPainter& painter, const Path& path, const CGRect& placed, const UIColor& tint) {
        if (!(path.extent > 0)) return;
        painter.save();
        painter.translate(placed.minX(), placed.minY());
        painter.scale(placed.width() / path.extent, placed.height() / path.extent);
        const QPainterPath outline = toQPainterPath(path);
        if (path.filled || path.strokeWidth <= 0) {
            painter.fillPath(outline, toQColor(tint));
        } else {
            painter.strokePath(outline,
                               QPen(toQColor(tint), path.strokeWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        }
        painter.restore();
    }

    QRectF visible(const QPainter& painter) const {
        bool invertible = false;
        const QTransform inverse = painter.transform().inverted(&invertible);
        const QRectF device(0, 0, painter.device()->width(), painter.device()->height());
        return invertible ? inverse.mapRect(device) : QRectF();
    }

    const DisplayList& list_;
    QImage& target_;
    const QPoint origin_;
    QPainter painter_;
};

}  // namespace

QPainterPath roundedPath(const QRectF& r, double radius, bool roundsTop, bool roundsBottom) {
    radius = std::max(0.0, std::min({radius, r.width() / 2, r.height() / 2}));
    QPainterPath path;
    if (radius <= 0 || (!roundsTop && !roundsBottom)) {
        path.addRect(r);
        return path;
    }
    if (roundsTop && roundsBottom) {
        path.addRoundedRect(r, radius, radius);
        return path;
    }
    const double top = roundsTop ? radius : 0, bottom = roundsBottom ? radius : 0;
    path.moveTo(r.left(), r.top() + top);
    if (top > 0) path.arcTo(QRectF(r.left(), r.top(), 2 * top, 2 * top), 180, -90);
    path.lineTo(r.right() - top, r.top());
    if (top > 0) path.arcTo(QRectF(r.right() - 2 * top, r.top(), 2 * top, 2 * top), 90, -90);
    path.lineTo(r.right(), r.bottom() - bottom);
    if (bottom > 0) {
        path.arcTo(QRectF(r.right() - 2 * bottom, r.bottom() - 2 * bottom, 2 * bottom, 2 * bottom), 0, -90);
    }
    path.lineTo(r.left() + bottom, r.bottom());
    if (bottom > 0) path.arcTo(QRectF(r.left(), r.bottom() - 2 * bottom, 2 * bottom, 2 * bottom), 270, -90);
    path.closeSubpath();
    return path;
}

double shadowMargin(const LayerShadow& shadow) {
    if (shadow.color.isClear()) return 0;
    return shadow.radius * 2 + std::max(std::abs(shadow.offset.x), std::abs(shadow.offset.y)) + 1;
}

CGRect placedImage(CGSize size, CGSize bounds, UIViewContentMode mode) {
    if (!(size.width > 0 && size.height > 0)) return {};
    const double xScale = bounds.width / size.width, yScale = bounds.height / size.height;
    double width = size.width, height = size.height;
    switch (mode) {
    case UIViewContentMode::scaleToFill: return {{}, bounds};
    case UIViewContentMode::scaleAspectFit:
    case UIViewContentMode::scaleAspectFill: {
        const bool fits = mode == UIViewContentMode::scaleAspectFit;
        const double scale = fits ? std::min(xScale, yScale) : std::max(xScale, yScale);
        width *= scale;
        height *= scale;
        break;
    }
    default: break;
    }
    double x = (bounds.width - width) / 2;
    if (mode == UIViewContentMode::left) x = 0;
    if (mode == UIViewContentMode::right) x = bounds.width - width;
    return {x, (bounds.height - height) / 2, width, height};
}

QImage paintDisplayList(const DisplayList& list, const QRect& pixels) {
    QImage image(pixels.size(), list.isOpaque ? QImage::Format_RGB32 : QImage::Format_ARGB32_Premultiplied);
    if (image.isNull() || list.entries.empty()) return {};
    image.fill(list.isOpaque ? toQColor(list.ground) : QColor(Qt::transparent));
    ListPainter(list, image, pixels.topLeft()).paintRoot();
    return image;
}

}  // namespace ostrel
