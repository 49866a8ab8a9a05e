#include "backends/qt/scene/SceneNodes.h"

#include "backends/qt/system/QtConversions.h"

#include <cmath>
#include <QMatrix4x4>
#include <QQuickWindow>
#include <QSGClipNode>
#include <QSGImageNode>
#include <QSGNode>
#include <QSGSimpleRectNode>
#include <QSGTexture>

namespace ostrel {

namespace {

class RectClipNode final : public QSGClipNode {
public:
    RectClipNode() : geometry_(QSGGeometry::defaultAttributes_Point2D(), 4) {
        setGeometry(&geometry_);
        setIsRectangular(true);
    }
    void setRect(const QRectF& rect) {
        setClipRect(rect);
        // Where the clip is turned, the renderers use the outline instead of the rectangle.
        QSGGeometry::updateRectGeometry(&geometry_, rect);
        markDirty(DirtyGeometry);
    }

private:
    QSGGeometry geometry_;
};

QMatrix4x4 placementMatrix(const MountedView& view) {
    const NodeValues& want = view.want;
    QMatrix4x4 matrix;
    matrix.translate(want.x, want.y);
    if (!want.transform.isIdentity() || want.angle != 0) {
        const CGAffineTransform& t = want.transform;
        const CGSize size = view.state->frame.size;
        const auto cx = static_cast<float>(size.width / 2), cy = static_cast<float>(size.height / 2);
        matrix.translate(cx, cy);
        matrix *= QMatrix4x4(float(t.a), float(t.c), 0, float(t.tx), float(t.b), float(t.d), 0, float(t.ty), 0, 0, 1, 0,
                             0, 0, 0, 1);
        const float sine = std::sin(want.angle), cosine = std::cos(want.angle);
        matrix *= QMatrix4x4(cosine, -sine, 0, 0, sine, cosine, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1);
        matrix.translate(-cx, -cy);
    }
    return matrix;
}

bool isTurnedOrScaled(const MountedView& view) {
    for (const MountedView* v = &view; v; v = v->parent) {
        const CGAffineTransform& t = v->state->transform;
        if (t.a != 1 || t.b != 0 || t.c != 0 || t.d != 1 || v->state->rotation) return true;
    }
    return false;
}

QSGImageNode* makeImageNode(QQuickWindow& window, const QImage& picture, QSGTexture::Filtering filtering) {
    QSGTexture* texture = window.createTextureFromImage(picture);
    if (!texture) return nullptr;
    QSGImageNode* node = window.createImageNode();
    node->setTexture(texture);
    node->setOwnsTexture(true);
    node->setFiltering(filtering);
    node->setSourceRect(QRectF({}, QSizeF(picture.size())));
    return node;
}

}  // namespace

void SceneNodes::apply(MountedView& view, std::vector<MountedView*>& unordered) {
    NodeValues& want = view.want;
    const bool lookIsTop = !want.placement;
    const bool lookChanged =
        want.look != view.have.look || (want.look == LookKind::picture && want.shown != view.have.shown);
    const bool rebuilds = !view.nodes.top || !want.sameNodes(view.have) || (lookIsTop && lookChanged);
    if (rebuilds) {
        for (MountedView* child : view.children) {
            QSGNode* top = child->nodes.top;
            if (top && top->parent()) top->parent()->removeChildNode(top);
        }
        delete view.nodes.top;
        view.nodes = {};
        view.have = {};
        build(view);
        view.childrenDirty = true;
        if (view.parent) view.parent->childrenDirty = true;
        unordered.push_back(view.parent ? view.parent : &view);
    } else if (lookChanged) {
        QSGNode* parent = view.nodes.look      ? view.nodes.look->parent()
                          : view.nodes.opacity ? static_cast<QSGNode*>(view.nodes.opacity)
                                               : view.nodes.placement;
        delete view.nodes.look;
        view.nodes.look = makeLook(view);
        if (view.nodes.look) parent->prependChildNode(view.nodes.look);
    }
    if (view.childrenDirty) unordered.push_back(&view);

    const NodeValues& have = view.have;
    const bool moved = rebuilds || have.x != want.x || have.y != want.y || have.angle != want.angle ||
                       !(have.transform == want.transform);
    if (view.nodes.placement) {
        if (moved) view.nodes.placement->setMatrix(placementMatrix(view));
    }
    const bool resized = rebuilds || have.width != want.width || have.height != want.height;
    if (rebuilds || lookChanged || (lookIsTop && moved) || (want.look == LookKind::rect && resized)) placeLook(view);
    if (want.look == LookKind::rect && view.nodes.look && (rebuilds || lookChanged || !(have.color == want.color))) {
        static_cast<QSGSimpleRectNode*>(view.nodes.look)->setColor(toQColor(want.color));
    }
    if (view.nodes.opacity && (rebuilds || have.alpha != want.alpha)) {
        view.nodes.opacity->setOpacity(static_cast<qreal>(want.alpha));
    }
    if (view.nodes.clip && resized) {
        static_cast<RectClipNode*>(view.nodes.clip)->setRect(QRectF(0, 0, qreal(want.width), qreal(want.height)));
    }
    if (view.nodes.content && (rebuilds || have.contentX != want.contentX || have.contentY != want.contentY)) {
        QMatrix4x4 matrix;
        matrix.translate(want.contentX, want.contentY);
        view.nodes.content->setMatrix(matrix);
    }
    if (want.spins) applySpinner(view);
    if (want.video || view.nodes.video) applyVideo(view);
    view.have = want;
}

void SceneNodes::build(MountedView& view) {
    const NodeValues& want = view.want;
    ViewNodes& nodes = view.nodes;
    if (!want.placement) {
        nodes.look = makeLook(view);
        nodes.top = nodes.look ? nodes.look : new QSGNode;
        return;
    }
    nodes.placement = new QSGTransformNode;
    nodes.top = nodes.placement;
    QSGNode* inner = nodes.placement;
    const auto append = [&](QSGNode* node) {
        inner->appendChildNode(node);
        inner = node;
    };
    if (want.opacity) append(nodes.opacity = new QSGOpacityNode);
    QSGNode* const own = inner;
    if ((nodes.look = makeLook(view))) own->appendChildNode(nodes.look);
    if (want.container) {
        if (want.clips) append(nodes.clip = new RectClipNode);
        if (want.moves) append(nodes.content = new QSGTransformNode);
        // Not a plain QSGNode: the software renderer ignores the transforms above a plain node for nodes added below
        // it.
        if (inner == own) append(new QSGTransformNode);
        nodes.container = inner;
    }
}

QSGNode* SceneNodes::makeLook(MountedView& view) {
    if (view.want.look == LookKind::rect) return new QSGSimpleRectNode;
    if (view.want.look != LookKind::picture || !view.surface) return nullptr;
    const auto filtering = isTurnedOrScaled(view) ? QSGTexture::Linear : QSGTexture::Nearest;
    if (view.surface->bands.size() == 1) {
        return makeImageNode(window_, view.surface->bands.front().picture, filtering);
    }
    auto* group = new QSGNode;
    for (const Band& band : view.surface->bands) {
        if (!band.visible || band.picture.isNull()) continue;
        if (QSGImageNode* node = makeImageNode(window_, band.picture, filtering)) group->appendChildNode(node);
    }
    return group;
}

void SceneNodes::placeLook(MountedView& view) {
    if (!view.nodes.look) return;
    const NodeValues& want = view.want;
    const double x = want.placement ? 0 : double(want.x), y = want.placement ? 0 : double(want.y);
    if (want.look == LookKind::rect) {
        static_cast<QSGSimpleRectNode*>(view.nodes.look)->setRect(x, y, qreal(want.width), qreal(want.height));
        return;
    }
    const auto rectOf = [&](const Band& band) {
        return QRectF(x + band.place.x() / scale_, y + band.place.y() / scale_, band.place.width() / scale_,
                      band.place.height() / scale_);
    };
    const std::vector<Band>& bands = view.surface->bands;
    if (bands.size() == 1) {
        static_cast<QSGImageNode*>(view.nodes.look)->setRect(rectOf(bands.front()));
        return;
    }
    QSGNode* node = view.nodes.look->firstChild();
    for (const Band& band : bands) {
        if (!band.visible || band.picture.isNull() || !node) continue;
        static_cast<QSGImageNode*>(node)->setRect(rectOf(band));
        node = node->nextSibling();
    }
}

void SceneNodes::applySpinner(MountedView& view) {
    const auto* spinner = std::get_if<SpinnerContent>(&view.state->content);
    if (!spinner) return;
    const auto side = static_cast<int>(view.want.spinnerKey >> 8 & 0xFFFF);
    if (!view.nodes.spinner || view.have.spinnerKey != view.want.spinnerKey) {
        delete view.nodes.spinner;
        view.nodes.spinner = makeImageNode(window_, spinners_.picture(*spinner, side), QSGTexture::Nearest);
        if (!view.nodes.spinner) return;
        QSGNode* parent = view.nodes.opacity ? static_cast<QSGNode*>(view.nodes.opacity) : view.nodes.placement;
        parent->appendChildNode(view.nodes.spinner);
        const CGSize size = view.state->frame.size;
        const double points = side / scale_;
        const auto snap = [&](double value) { return std::round(value * scale_) / scale_; };
        view.nodes.spinner->setRect(
            QRectF(snap((size.width - points) / 2), snap((size.height - points) / 2), points, points));
    }
    view.nodes.spinner->setSourceRect(QRectF(view.want.spinnerPhase * side, 0, side, side));
    // The software renderer does not notice a change of the source rectangle alone.
    view.nodes.spinner->markDirty(QSGNode::DirtyMaterial);
}

void SceneNodes::applyVideo(MountedView& view) {
    const NodeValues& want = view.want;
    QSGImageNode*& node = view.nodes.video;
    if (!want.video) {
        delete node;
        node = nullptr;
        return;
    }
    const QImage& picture = view.video;
    if (node && view.have.video && view.have.videoShown == want.videoShown && view.have.videoRect == want.videoRect)
        return;
    const bool isExact = std::abs(want.videoRect.width() * scale_ - picture.width()) < 0.5;
    const auto filtering = isExact && !isTurnedOrScaled(view) ? QSGTexture::Nearest : QSGTexture::Linear;
    if (!node) {
        node = makeImageNode(window_, picture, filtering);
        if (!node) return;
        QSGNode* parent = view.nodes.opacity ? static_cast<QSGNode*>(view.nodes.opacity) : view.nodes.placement;
        if (view.nodes.look) {
            parent->insertChildNodeAfter(node, view.nodes.look);
        } else {
            parent->prependChildNode(node);
        }
    } else if (view.have.videoShown != want.videoShown) {
        QSGTexture* texture = window_.createTextureFromImage(picture);
        if (!texture) return;
        node->setTexture(texture);
        node->setFiltering(filtering);
        node->setSourceRect(QRectF({}, QSizeF(picture.size())));
    }
    node->setRect(toQRectF(want.videoRect));
    // The software renderer does not notice a changed texture, so the node is marked dirty.
    node->markDirty(QSGNode::DirtyMaterial);
}

void SceneNodes::orderChildren(MountedView& parent) {
    parent.childrenDirty = false;
    QSGNode* container = parent.nodes.container;
    if (!container) return;
    QSGNode* cursor = container->firstChild();
    for (MountedView* child : parent.children) {
        QSGNode* top = child->nodes.top;
        if (!top) continue;
        if (top == cursor) {
            cursor = cursor->nextSibling();
            continue;
        }
        if (top->parent()) top->parent()->removeChildNode(top);
        if (cursor) {
            container->insertChildNodeBefore(top, cursor);
        } else {
            container->appendChildNode(top);
        }
    }
}

void SceneNodes::forget(MountedView& view) {
    if (!view.nodes.top) return;
    view.nodes = {};
    view.have = {};
    for (MountedView* child : view.children) forget(*child);
}

}  // namespace ostrel
