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

/// One view of a surface, at the moment the list was taken.
struct DisplayEntry {
    std::shared_ptr<const ViewState> state;
    std::size_t end = 0;          ///< one past the last entry of its subtree
    QImage picture;               ///< of an ImageContent, when it was decoded apart
    bool pictureMissing = false;  ///< still being decoded: left out
};

/// A view above that clips to round corners: nothing of what lies beyond them is painted. Straight edges are left to the
/// clip of that view itself.
struct CornerClip {
    CGRect rect;  ///< points from the upper left corner of the surface's view
    double radius = 0;
    bool roundsTop = true, roundsBottom = true;
    friend bool operator==(const CornerClip&, const CornerClip&) = default;
};

/// What a surface shows: its root view and all views painted with it, parents before children. Immutable once taken, so
/// that worker threads paint from it while the views go on changing.
struct DisplayList {
    std::vector<DisplayEntry> entries;
    double scale = 1;       ///< device pixels a point
    int margin = 0;         ///< device pixels around the view's frame, for its shadow
    bool isOpaque = false;  ///< every pixel is covered
    UIColor ground;         ///< painted below all when opaque
    std::optional<CornerClip> corners;
    PictureStore* pictures = nullptr;
    /// For a blur that is no part of another surface: what lies beneath it, from its own upper left corner on.
    std::shared_ptr<const DisplayList> beneath;
    CGPoint beneathOrigin;  ///< points: where in `beneath` the view stands
};

/// The rectangle that a picture of `size` takes within a view of `bounds` in this content mode.
CGRect placedImage(CGSize size, CGSize bounds, UIViewContentMode mode);

/// Paints `pixels` (in device pixels from the list's upper left corner, margin included). The own frame origin,
/// transform, alpha and hiding of the root view are left to whoever shows the picture. Any thread; draws text, so after
/// `prepareFonts`.
QImage paintDisplayList(const DisplayList& list, const QRect& pixels);

/// `rect` with its upper and lower corners rounded by `radius`, where wanted.
QPainterPath roundedPath(const QRectF& rect, double radius, bool roundsTop, bool roundsBottom);

/// Points around a view that its shadow covers.
double shadowMargin(const LayerShadow& shadow);

/// Whether text under edit is painted by its surface: an editor of its own shows it while it has the focus.
inline bool isPainted(const TextInputContent& input) { return !input.focused; }

}  // namespace ostrel
