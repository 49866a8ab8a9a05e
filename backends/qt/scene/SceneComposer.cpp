#include "backends/qt/scene/SceneComposer.h"

#include "backends/qt/scene/SceneNodes.h"
#include "backends/qt/video/VideoPicture.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <QQuickWindow>
#include <QSGNode>
#include <thread>

namespace ostrel {

namespace {

// Points. Nodes are placed in single precision, so content further than this from its base gets a nearer base.
constexpr double farthestFromBase = 4096;
constexpr double everywhere = 1e300;
// Seconds to wait for the visible pictures, so that no frame shows a part of them only: before the first frame, and
// before later ones.
constexpr double firstWait = 0.1;
constexpr double stillWait = 0.008;

int workerCount() {
    const auto cores = static_cast<int>(std::thread::hardware_concurrency());
    return std::clamp(cores - 1, 1, 4);
}

}  // namespace

double SceneComposer::Region::distance(const Region& o) const {
    const double dx = std::max({0.0, x0 - o.x1, o.x0 - x1});
    const double dy = std::max({0.0, y0 - o.y1, o.y0 - y1});
    return std::max(dx, dy);
}

SceneComposer::SceneComposer(std::function<void()> workFinished)
    : workFinished_(std::move(workFinished)),
      store_(workFinished_),
      tree_(*this),
      pool_(workerCount(), workFinished_) {}

SceneComposer::~SceneComposer() { hideVideos(); }

void SceneComposer::mount(const MountingTransaction& transaction) { tree_.apply(transaction); }

void SceneComposer::reset() {
    tree_.clear();
    queue_.clear();
    hideVideos();
}

void SceneComposer::setViewport(CGSize size, double scale) {
    viewport_ = size;
    if (scale == scale_ || !(scale > 0)) return;
    scale_ = scale;
    for (const auto& [tag, view] : tree_.views()) view->pictureDirty = true;
    everythingLost_ = true;
}

double SceneComposer::snap(double value) const { return std::round(value * scale_) / scale_; }

bool SceneComposer::prepare(double now) {
    now_ = now;
    // Scrolling does not wait for pictures; a single jump waits as any other change does.
    const double longestWait = !hasShown_ ? firstWait : isScrolling(now) ? 0 : stillWait;
    if (std::exchange(scrolled_, false)) lastScroll_ = now;
    collectResults();
    walkTree();
    if (waiting_ > 0 && longestWait > 0) {
        const auto end =
            std::chrono::steady_clock::now() + std::chrono::microseconds(static_cast<std::int64_t>(longestWait * 1e6));
        const std::uint64_t painted = statistics_.bandsPainted;
        while (waiting_ > 0 && pool_.helpUntil(end)) collectResults();
        if (statistics_.bandsPainted != painted) walkTree();
    }
    dropDistantPictures();
    return !queue_.empty() || !doomed_.empty() || everythingLost_;
}

void SceneComposer::walkTree() {
    waiting_ = 0;
    turning_ = viewsTurn_ = false;
    missesPictures_ = false;
    const auto watched = std::exchange(videos_, {});
    MountedView* root = tree_.root();
    if (root) {
        const Region window{0, 0, viewport_.width, viewport_.height};
        const bool shown = walk(*root, {0, 0, 0, 0, 0, 0, window, true, nullptr});
        if (!shown) hide(*root);
    }
    for (const auto& video : watched) {
        if (std::find(videos_.begin(), videos_.end(), video) == videos_.end()) video->hide();
    }
    if (outstanding_ > 0) {
        pool_.updateDistances([this](const PaintJob& job) {
            const MountedView* view = tree_.find(job.surface);
            const bool isWanted = view && view->surface && view->surface->version == job.version;
            if (!isWanted) --outstanding_;
            return isWanted ? view->surface->bands[static_cast<std::size_t>(job.band)].distance : -1.0;
        });
    }
}

bool SceneComposer::walk(MountedView& view, const Place& place) {
    const ViewState& state = *view.state;
    if (state.hidden || !(state.alpha > 0.003)) {
        hide(view);
        return false;
    }
    const double x = place.originX + state.frame.minX(), y = place.originY + state.frame.minY();
    const Region frame{x, y, x + state.frame.width(), y + state.frame.height()};
    const bool turns = prepareRotation(view, place, frame);
    const bool isExact = place.isExact && state.transform.isIdentity() && !turns;
    const bool clips = state.clipsToBounds && view.role != MountRole::painted;
    if (isExact && clips && view.role == MountRole::structural && !frame.intersects(place.clip)) {
        hide(view);
        return false;
    }

    NodeValues& want = view.want;
    const double exactX = place.restX + state.frame.minX() - place.baseX;
    const double exactY = place.restY + state.frame.minY() - place.baseY;
    const double shownX = snap(exactX), shownY = snap(exactY);
    want.x = static_cast<float>(shownX);
    want.y = static_cast<float>(shownY);
    want.alpha = static_cast<float>(state.alpha);
    want.transform = state.transform;

    want.look = LookKind::none;
    if (view.role != MountRole::painted) want.look = preparePicture(view, place, frame, isExact);
    bool hasChildren = false;
    if (!view.children.empty() && (view.role == MountRole::structural || view.hasLive)) {
        hasChildren = walkChildren(view, place, frame, isExact, exactX - shownX, exactY - shownY);
    }
    const bool spins =
        std::holds_alternative<SpinnerContent>(state.content) && (!isExact || frame.intersects(place.clip));
    const bool showsVideo = prepareVideo(view, place, frame, isExact);
    if (want.look == LookKind::none && !hasChildren && !spins && !showsVideo) {
        hide(view);
        return false;
    }

    // A node that was needed once stays while the view is shown, so that fading and scrolling do not rebuild nodes.
    const bool sticky = view.shown;
    want.spins = spins;
    want.video = showsVideo;
    if (spins) prepareSpinner(view);
    want.container = hasChildren || (sticky && want.container);
    want.clips = state.clipsToBounds && want.container;
    want.moves = view.scrolls && want.container;
    want.opacity = state.alpha < 1 || (sticky && want.opacity);
    const bool hasBands = want.look == LookKind::picture && view.surface->bands.size() > 1;
    want.placement = want.container || want.spins || want.video || want.opacity || hasBands ||
                     !state.transform.isIdentity() || turns || (sticky && want.placement);
    want.width = static_cast<float>(snap(exactX + state.frame.width()) - shownX);
    want.height = static_cast<float>(snap(exactY + state.frame.height()) - shownY);
    if (want.look == LookKind::rect) {
        // A hairline fills the whole pixel in which it begins.
        const auto widen = [this](float& position, float& size, double exact) {
            if (size > 0) return;
            position = static_cast<float>(std::floor(exact * scale_ + 1e-6) / scale_);
            size = static_cast<float>(1 / scale_);
        };
        widen(want.x, want.width, exactX);
        widen(want.y, want.height, exactY);
    }
    if (want.look == LookKind::picture) want.shown = view.surface->shown;
    view.shown = true;
    if (!view.nodes.top || view.childrenDirty || !(want == view.have)) queue(view);
    return true;
}

bool SceneComposer::walkChildren(MountedView& view, const Place& place, const Region& frame, bool isExact, double restX,
                                 double restY) {
    const ViewState& state = *view.state;
    const CGPoint origin = state.boundsOrigin;
    if (!view.scrolls && (origin.x != 0 || origin.y != 0)) view.scrolls = true;
    if (view.scrolls) {
        const auto rebase = [](double& base, double value) {
            if (std::abs(value - base) > farthestFromBase) base = std::round(value / 1024) * 1024;
        };
        rebase(view.base.x, origin.x);
        rebase(view.base.y, origin.y);
        // Content moves by whole pixels, and its views begin at whole pixels of the content.
        view.want.contentX = static_cast<float>(snap(restX + view.base.x - origin.x));
        view.want.contentY = static_cast<float>(snap(restY + view.base.y - origin.y));
        restX = restY = 0;
    }
    Place inner;
    inner.originX = frame.x0 - origin.x;
    inner.originY = frame.y0 - origin.y;
    inner.baseX = view.base.x;
    inner.baseY = view.base.y;
    inner.restX = restX;
    inner.restY = restY;
    inner.isExact = isExact;
    inner.clip = place.clip;
    if (!isExact) {
        inner.clip = {-everywhere, -everywhere, everywhere, everywhere};
    } else if (state.clipsToBounds) {
        inner.clip = {std::max(inner.clip.x0, frame.x0), std::max(inner.clip.y0, frame.y0),
                      std::min(inner.clip.x1, frame.x1), std::min(inner.clip.y1, frame.y1)};
    }
    inner.ground = nullptr;
    if (view.role == MountRole::structural) {
        const bool isFirst = !view.parent || view.parent->children.front() == &view;
        if (view.look == LookKind::rect && state.backgroundColor.alpha >= 1) {
            inner.ground = &state.backgroundColor;
        } else if (view.look == LookKind::none && isFirst) {
            inner.ground = place.ground;
        }
    }
    CornerClip own;
    if (state.clipsToBounds && state.cornerRadius > 0 && (state.roundsTop || state.roundsBottom)) {
        own = {{frame.x0, frame.y0, state.frame.width(), state.frame.height()},
               state.cornerRadius,
               state.roundsTop,
               state.roundsBottom};
        inner.corners = &own;
    } else if (state.transform.isIdentity()) {
        inner.corners = place.corners;
    }
    bool any = false;
    for (MountedView* child : view.children) {
        if (child->role == MountRole::painted && !child->hasLive) continue;
        any |= walk(*child, inner);
    }
    return any;
}

void SceneComposer::hide(MountedView& view) {
    if (!view.shown) return;
    if (view.nodes.top) {
        doomed_.push_back(view.nodes.top);
        SceneNodes::forget(view);
    }
    const auto markHidden = [](auto& self, MountedView& hidden) -> void {
        if (!hidden.shown) return;
        hidden.shown = false;
        hidden.want = {};
        hidden.video = {};
        if (hidden.surface) {
            for (Band& band : hidden.surface->bands) band.visible = false;
        }
        for (MountedView* child : hidden.children) self(self, *child);
    };
    markHidden(markHidden, view);
}

void SceneComposer::queue(MountedView& view) {
    if (std::exchange(view.queued, true)) return;
    queue_.push_back(&view);
}

void SceneComposer::hideVideos() {
    for (const auto& video : std::exchange(videos_, {})) video->hide();
}

void SceneComposer::viewWillLeave(MountedView& view) {
    hide(view);
    const auto forgetPictures = [](auto& self, MountedView& left) -> void {
        left.lastImage.reset();
        left.lastPicture = {};
        for (MountedView* child : left.children) self(self, *child);
    };
    forgetPictures(forgetPictures, view);
}

void SceneComposer::viewWillBeDestroyed(MountedView& view) {
    if (view.queued) std::erase(queue_, &view);
    // The next walk drops the surface's jobs that have not begun, because it does not find their surface any more.
}

/// Sets the angle of a view with a rotation; true when the view is shown turned. A view outside of the viewport is not
/// turned.
bool SceneComposer::prepareRotation(MountedView& view, const Place& place, const Region& frame) {
    view.want.angle = 0;
    const LayerRotation* const rotation = view.state->rotation.get();
    if (!rotation) return false;
    const double reach = std::hypot(frame.x1 - frame.x0, frame.y1 - frame.y0) / 2;
    const double x = (frame.x0 + frame.x1) / 2, y = (frame.y0 + frame.y1) / 2;
    const Region around{x - reach, y - reach, x + reach, y + reach};
    if (place.isExact && !around.intersects(place.clip)) return false;
    view.want.angle = static_cast<float>(rotation->angleAt(now_));
    viewsTurn_ |= rotation->isMoving(now_);
    return true;
}

void SceneComposer::prepareSpinner(MountedView& view) {
    const auto& spinner = std::get<SpinnerContent>(view.state->content);
    const CGSize size = view.state->frame.size;
    const int side = static_cast<int>(std::lround(std::clamp(std::min(size.width, size.height), 1.0, 64.0) * scale_));
    view.want.spinnerKey = SpinnerPictures::keyFor(spinner, side);
    view.want.spinnerPhase = 0;
    if (!spinner.animating) return;
    turning_ = true;
    const double turn = now_ - std::floor(now_);
    constexpr int phases = SpinnerPictures::phaseCount;
    // With reduced motion a turn takes two seconds, in eight steps.
    const int phase = reduceMotion_ ? static_cast<int>((now_ / 2 - std::floor(now_ / 2)) * 8) * (phases / 8)
                                    : static_cast<int>(turn * phases);
    view.want.spinnerPhase = std::clamp(phase, 0, phases - 1);
}

double SceneComposer::spinnerInterval() const {
    if (!turning_) return 0;
    return reduceMotion_ ? 0.25 : 1.0 / SpinnerPictures::phaseCount;
}

QSGNode* SceneComposer::synchronise(QSGNode* root, QQuickWindow& window) {
    MountedView* top = tree_.root();
    if (!root || everythingLost_) {
        // The scene graph has deleted the nodes, or they are for another scale: all nodes are made anew.
        if (root) {
            while (QSGNode* child = root->firstChild()) delete child;
        } else {
            root = new QSGTransformNode;
        }
        doomed_.clear();
        everythingLost_ = false;
        if (top) SceneNodes::forget(*top);
        const auto queueShown = [this](auto& self, MountedView& view) -> void {
            if (!view.shown) return;
            queue(view);
            for (MountedView* child : view.children) self(self, *child);
        };
        if (top) queueShown(queueShown, *top);
    }
    for (QSGNode* node : doomed_) delete node;
    doomed_.clear();

    SceneNodes nodes(window, scale_, spinners_);
    std::vector<MountedView*> unordered;
    std::size_t changed = 0;
    for (MountedView* view : queue_) {
        view->queued = false;
        if (!view->shown) continue;
        nodes.apply(*view, unordered);
        ++changed;
    }
    queue_.clear();
    for (MountedView* view : unordered) {
        if (view->childrenDirty) SceneNodes::orderChildren(*view);
    }
    if (top && top->nodes.top && top->nodes.top->parent() != root) root->appendChildNode(top->nodes.top);
    statistics_.nodesChanged = changed;
    hasShown_ = hasShown_ || top;
    return root;
}

bool SceneComposer::isSettled() const { return waiting_ == 0 && !missesPictures_ && queue_.empty() && doomed_.empty(); }

CGRect SceneComposer::frameInWindow(const MountedView& view, CGRect& clip, double& alpha) const {
    CGRect frame = view.state->frame;
    alpha = view.state->hidden ? 0 : view.state->alpha;
    std::vector<const MountedView*> chain;
    for (const MountedView* v = view.parent; v; v = v->parent) chain.push_back(v);
    clip = CGRect({}, viewport_);
    double x = 0, y = 0;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        const ViewState& state = *(*it)->state;
        x += state.frame.minX();
        y += state.frame.minY();
        if (state.clipsToBounds) clip = clip.intersection({{x, y}, state.frame.size});
        x -= state.boundsOrigin.x;
        y -= state.boundsOrigin.y;
        alpha *= state.hidden ? 0 : state.alpha;
    }
    return frame.offsetBy(x, y);
}

SceneComposer::Statistics SceneComposer::statistics() const {
    Statistics result = statistics_;
    result.mountedViews = tree_.views().size();
    for (const auto& [tag, view] : tree_.views()) {
        if (!view->surface) continue;
        for (const Band& band : view->surface->bands) {
            if (band.picture.isNull()) continue;
            ++result.pictures;
            result.pictureBytes += static_cast<std::size_t>(band.picture.sizeInBytes());
        }
    }
    return result;
}

}  // namespace ostrel
