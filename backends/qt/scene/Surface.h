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

/// A band of a surface's picture. Surfaces are one tile unless they are higher than a screen or two.
struct Tile {
    QRect pixels;  ///< in the surface's picture
    QImage picture;
    QRect place;                  ///< of `picture`, in device pixels from the view's upper left corner
    std::uint64_t submitted = 0;  ///< the version that was given to the painters
    std::uint64_t painted = 0;    ///< the version of `picture`; 0: none
    bool visible = false;
    bool dropped = false;  ///< let go for want of room; painted again when it comes in sight
    double distance = 0;
};

/// The picture of a view that is painted, with its tiles.
struct Surface {
    std::uint64_t id = 0;
    std::uint64_t version = 0;  ///< of the display list; the pictures may be older
    std::shared_ptr<const DisplayList> list;
    std::vector<Tile> tiles;
    QSize pixels;
    int margin = 0;
    std::vector<PictureKey> missing;  ///< pictures within it that are still being decoded
    bool usesGround = false;          ///< made opaque by the colour behind it
    bool groundRefused = false;       ///< other views have been seen behind it
    UIColor ground;
    std::optional<CornerClip> corners;  ///< as the list was taken
    std::uint64_t shown = 0;            ///< counts changes of what its nodes show
};

enum class LookKind : std::uint8_t { none, rect, picture };

/// What the nodes of one view show; compared to find what has to change.
struct NodeValues {
    // Which nodes there are. Changing any of these makes them anew.
    bool placement = false, opacity = false, clips = false, moves = false, container = false, spins = false;
    bool video = false;  ///< comes and goes without making the others anew
    LookKind look = LookKind::none;

    float x = 0, y = 0;  ///< points, from the parent's base
    CGAffineTransform transform;
    float angle = 0;  ///< that a turning view shows now, radians
    float alpha = 1;
    float width = 0, height = 0;       ///< of the clip, or of a plain rectangle
    float contentX = 0, contentY = 0;  ///< where the content's base is shown
    UIColor color;
    std::uint64_t shown = 0;
    int spinnerPhase = 0;
    std::uint64_t spinnerKey = 0;
    std::uint64_t videoShown = 0;  ///< counts the pictures of the video
    CGRect videoRect;              ///< within the view, points
    friend bool operator==(const NodeValues&, const NodeValues&) = default;

    bool sameNodes(const NodeValues& o) const {
        return placement == o.placement && opacity == o.opacity && clips == o.clips && moves == o.moves &&
               container == o.container && spins == o.spins;
    }
};

/// The nodes of one view: placement > opacity > (look, video, clip > content > children, spinner). Owned by the scene graph.
struct ViewNodes {
    QSGNode* top = nullptr;
    QSGTransformNode* placement = nullptr;
    QSGOpacityNode* opacity = nullptr;
    QSGNode* look = nullptr;
    QSGClipNode* clip = nullptr;
    QSGTransformNode* content = nullptr;
    QSGNode* container = nullptr;  ///< holds the children's nodes
    QSGImageNode* spinner = nullptr;
    QSGImageNode* video = nullptr;
};

}  // namespace ostrel
