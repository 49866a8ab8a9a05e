#pragma once

#include "backends/qt/paint/DisplayList.h"
#include "backends/qt/paint/PictureStore.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <QImage>
#include <QRect>
#include <QSize>
#include <vector>

QT_BEGIN_NAMESPACE
class QSGClipNode;
class QSGImageNode;
class QSGNode;
class QSGOpacityNode;
class QSGTransformNode;
QT_END_NAMESPACE

namespace ostrel {

/// A band of a surface's picture, as wide as the surface. Surfaces are one band unless they are higher than a screen or
/// two.
struct Band {
    /// The rectangle in the surface's picture.
    QRect pixels;
    QImage picture;
    /// The rectangle of `picture` in device pixels from the view's upper left corner.
    QRect place;
    /// The version of the display list that was given to the painting threads.
    std::uint64_t submitted = 0;
    /// The version of the display list that `picture` shows; 0: there is no picture.
    std::uint64_t painted = 0;
    bool visible = false;
    /// The picture was dropped for want of memory; the band is painted again when it becomes visible.
    bool dropped = false;
    /// Points to the viewport; 0 when visible.
    double distance = 0;
};

/// The picture of a view that is painted, with its bands.
struct Surface {
    std::uint64_t id = 0;
    /// The version of `list`; the bands' pictures may be older.
    std::uint64_t version = 0;
    std::shared_ptr<const DisplayList> list;
    std::vector<Band> bands;
    QSize pixels;
    int margin = 0;
    /// Pictures in the surface that are still being decoded.
    std::vector<PictureKey> missing;
    /// `ground`, the colour behind the surface, is painted below it, so that the picture is opaque.
    bool usesGround = false;
    /// Other views have been found behind the surface, so that its picture stays transparent.
    bool groundRefused = false;
    UIColor ground;
    /// The round corners of ancestors when the list was taken.
    std::optional<CornerClip> corners;
    /// Counts the changes of what the surface's nodes show.
    std::uint64_t shown = 0;
};

enum class LookKind : std::uint8_t { none, rect, picture };

/// What the nodes of one view show; compared to find what has to change.
struct NodeValues {
    // Which nodes the view has. A change of any of these rebuilds them.
    bool placement = false, opacity = false, clips = false, moves = false, container = false, spins = false;
    /// The video's node comes and goes without rebuilding the others.
    bool video = false;
    LookKind look = LookKind::none;

    /// Points from the parent's base.
    float x = 0, y = 0;
    CGAffineTransform transform;
    /// Radians: the angle of a rotating view now.
    float angle = 0;
    float alpha = 1;
    /// Points: the size of the clip, or of a plain rectangle.
    float width = 0, height = 0;
    /// Points: the position of the content's base in the view.
    float contentX = 0, contentY = 0;
    UIColor color;
    std::uint64_t shown = 0;
    int spinnerPhase = 0;
    std::uint64_t spinnerKey = 0;
    /// Counts the frames of the video that were shown.
    std::uint64_t videoShown = 0;
    /// Points in the view.
    CGRect videoRect;
    friend bool operator==(const NodeValues&, const NodeValues&) = default;

    bool sameNodes(const NodeValues& o) const {
        return placement == o.placement && opacity == o.opacity && clips == o.clips && moves == o.moves &&
               container == o.container && spins == o.spins;
    }
};

/// The nodes of one view: placement > opacity > (look, video, clip > content > children, spinner). Owned by the scene
/// graph.
struct ViewNodes {
    QSGNode* top = nullptr;
    QSGTransformNode* placement = nullptr;
    QSGOpacityNode* opacity = nullptr;
    QSGNode* look = nullptr;
    QSGClipNode* clip = nullptr;
    QSGTransformNode* content = nullptr;
    /// The parent of the children's nodes.
    QSGNode* container = nullptr;
    QSGImageNode* spinner = nullptr;
    QSGImageNode* video = nullptr;
};

}  // namespace ostrel
