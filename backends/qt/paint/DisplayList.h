#pragma once

#include "platform/uikit/mounting/Mounting.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <QImage>
#include <QPainterPath>
#include <QRect>
#include <vector>

namespace ostrel {

class PictureStore;

/// One view of a surface as it was when the list was taken.
struct DisplayEntry {
    std::shared_ptr<const ViewState> state;
    /// The index after the last entry of the view's subtree.
    std::size_t end = 0;
    /// The picture of an ImageContent, when the decoding thread made it.
    QImage picture;
    /// The picture is still being decoded and is not painted.
    bool pictureMissing = false;
};

/// The round corners of an ancestor that clips: nothing beyond them is painted. The ancestor's own clip node cuts the
/// straight edges.
struct CornerClip {
    /// Points from the upper left corner of the surface's view.
    CGRect rect;
    double radius = 0;
    bool roundsTop = true, roundsBottom = true;
    friend bool operator==(const CornerClip&, const CornerClip&) = default;
};

/// What a surface shows: its root view and all views painted with the root, parents before children. A list is
/// immutable, so that painting threads can read it while the main thread changes the views.
struct DisplayList {
    std::vector<DisplayEntry> entries;
    /// Device pixels per point.
    double scale = 1;
    /// Device pixels around the view's frame, for its shadow.
    int margin = 0;
    /// Every pixel is covered; `ground` is painted first.
    bool isOpaque = false;
    UIColor ground;
    std::optional<CornerClip> corners;
    PictureStore* pictures = nullptr;
    /// For a blur outside of surfaces: the list of the views beneath the blur; else null.
    std::shared_ptr<const DisplayList> beneath;
    /// Points: the position of the blur in `beneath`.
    CGPoint beneathOrigin;
};

/// The rectangle that a picture of `size` takes within a view of `bounds` in this content mode.
CGRect placedImage(CGSize size, CGSize bounds, UIViewContentMode mode);

/// Paints the rectangle `pixels` of the list (device pixels from its upper left corner, margin included). The root
/// view's own frame origin, transform, alpha and hiding are not applied: the nodes that show the picture do that. Any
/// thread, after `prepareFonts`.
QImage paintDisplayList(const DisplayList& list, const QRect& pixels);

/// The outline of `rect`, with its upper and its lower corners rounded by `radius` when wanted.
QPainterPath roundedPath(const QRectF& rect, double radius, bool roundsTop, bool roundsBottom);

/// How far a shadow reaches beyond its view, in points.
double shadowMargin(const LayerShadow& shadow);

/// Whether the surface paints the text of an input: while the input has the focus, an editor shows the text instead.
inline bool isPainted(const TextInputContent& input) { return !input.focused; }

}  // namespace ostrel
