// The part of the composer that has surfaces painted.

#include "backends/qt/scene/SceneComposer.h"
#include "backends/qt/video/QtPlayer.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

// In heights of the window: how far beyond the viewport surfaces are painted ahead, and the distance beyond which
// their pictures are dropped.
constexpr double aheadScreens = 1.5;
constexpr double keptScreens = 2;
constexpr std::size_t maximumPictureBytes = 64 << 20;
// Device pixels: a higher surface is painted in bands.
constexpr int maximumUndividedHeight = 2048;
constexpr int bandHeight = 1024;
constexpr int maximumPictureWidth = 8192;
constexpr double maximumOverflow = 64;

bool hasRoundCorners(const ViewState& state) {
    return state.cornerRadius > 0 && (state.roundsTop || state.roundsBottom);
}

bool paintsContent(const ViewContent& content) {
    if (const auto* text = std::get_if<TextContent>(&content)) return !text->text.empty();
    if (const auto* image = std::get_if<ImageContent>(&content)) return image->image != nullptr;
    if (const auto* input = std::get_if<TextInputContent>(&content)) return isPainted(*input);
    return std::holds_alternative<BlurContent>(content);
}

/// Whether `view` adds anything to the picture of its surface.
bool paintsSomething(const MountedView& view) {
    const ViewState& state = *view.state;
    if (view.role != MountRole::painted || state.hidden) return false;
    return !state.backgroundColor.isClear() || !state.shadow.color.isClear() ||
           (state.borderWidth > 0 && !state.borderColor.isClear()) || paintsContent(state.content) ||
           std::any_of(view.children.begin(), view.children.end(),
                       [](const MountedView* child) { return paintsSomething(*child); });
}

/// The round corners of `clip` (in the window) in the coordinates of a view with this frame; none when the view does
/// not reach any of them.
std::optional<CornerClip> cornersWithin(const CornerClip* clip, CGRect frame, double scale) {
    if (!clip) return std::nullopt;
    const CGRect& rect = clip->rect;
    const double r = clip->radius;
    const auto covers = [&](double x, double y) { return frame.intersects({x, y, r, r}); };
    const double right = rect.maxX() - r, bottom = rect.maxY() - r;
    const bool top = clip->roundsTop && (covers(rect.minX(), rect.minY()) || covers(right, rect.minY()));
    const bool below = clip->roundsBottom && (covers(rect.minX(), bottom) || covers(right, bottom));
    if (!top && !below) return std::nullopt;
    // In whole pixels, so that a view that moves with its clip is not painted again.
    const auto snap = [&](double value) { return std::round(value * scale) / scale; };
    CornerClip seen = *clip;
    seen.rect.origin = {snap(rect.minX() - frame.minX()), snap(rect.minY() - frame.minY())};
    return seen;
}

/// Notes which painted views have live views below, because they need nodes that place the live ones.
bool refreshLive(MountedView& view) {
    bool any = false;
    for (MountedView* child : view.children) {
        if (child->role == MountRole::surface) {
            any = true;
        } else if (child->role == MountRole::painted) {
            const ViewContent& content = child->state->content;
            child->hasLive = refreshLive(*child) || std::holds_alternative<SpinnerContent>(content) ||
                             std::holds_alternative<PlayerContent>(content);
            any |= child->hasLive;
        }
    }
    return any;
}

}  // namespace

void SceneComposer::refreshLook(MountedView& view) {
    const ViewState& state = *view.state;
    const bool isSurface = view.role == MountRole::surface;
    view.hasLive = isSurface && refreshLive(view);
    const bool paintsChildren =
        isSurface && std::any_of(view.children.begin(), view.children.end(),
                                 [](const MountedView* child) { return paintsSomething(*child); });
    const bool hasBorder = state.borderWidth > 0 && !state.borderColor.isClear();
    if (paintsChildren || hasBorder || !state.shadow.color.isClear() || paintsContent(state.content)) {
        view.look = LookKind::picture;
    } else if (state.backgroundColor.isClear()) {
        view.look = LookKind::none;
    } else {
        view.look = hasRoundCorners(state) ? LookKind::picture : LookKind::rect;
    }
    if (state.frame.isEmpty()) view.look = LookKind::none;
    if (view.look != LookKind::picture) view.surface.reset();
}

LookKind SceneComposer::preparePicture(MountedView& view, const Place& place, const Region& frame, bool isExact) {
    const bool wasDirty = std::exchange(view.pictureDirty, false);
    if (wasDirty) refreshLook(view);
    if (view.look == LookKind::none) return LookKind::none;
    const ViewState& state = *view.state;
    const bool isVisible = !isExact || frame.intersects(place.clip);
    const CGRect inWindow{frame.x0, frame.y0, state.frame.width(), state.frame.height()};
    const auto corners = state.transform.isIdentity() ? cornersWithin(place.corners, inWindow, scale_) : std::nullopt;
    if (view.look == LookKind::rect && !corners) {
        view.surface.reset();
        view.want.color = state.backgroundColor;
        return isVisible ? LookKind::rect : LookKind::none;
    }

    const double distance = isExact ? frame.distance(place.clip) : 0;
    const double screen = std::max(viewport_.height, viewport_.width);
    const double margin = view.surface ? view.surface->margin / scale_ : shadowMargin(state.shadow);
    const bool isNear = distance - margin <= aheadScreens * screen;
    if (!view.surface) {
        view.surface = std::make_unique<Surface>();
        view.surface->id = view.tag;
    }
    Surface& surface = *view.surface;
    bool outdated = wasDirty || surface.version == 0 || surface.corners != corners;
    surface.corners = corners;
    if (!outdated && surface.usesGround) {
        const bool isSame = place.ground && *place.ground == surface.ground;
        const bool alone = isAlone(view);
        surface.groundRefused = !alone;
        outdated = !isSame || !alone;
    }
    if (!isNear) {
        // The display list is taken when the surface comes nearer.
        view.pictureDirty = outdated;
    } else if (outdated) {
        takeList(view, place);
    }

    bool anyShown = false, lookChanged = false;
    for (std::size_t i = 0; i < surface.bands.size(); ++i) {
        Band& band = surface.bands[i];
        const double top = frame.y0 + (band.pixels.y() - surface.margin) / scale_;
        const double left = frame.x0 - surface.margin / scale_;
        const Region area{left, top, left + band.pixels.width() / scale_, top + band.pixels.height() / scale_};
        const bool visible = !isExact || area.intersects(place.clip);
        band.distance = visible || !isExact ? 0 : std::max(area.distance(place.clip), 1e-3);
        if (band.distance > keptScreens * screen) {
            band.picture = {};
            band.painted = 0;
            band.submitted = 0;
        } else if (band.painted != surface.version && isNear && !view.pictureDirty) {
            const bool isNew = band.submitted != surface.version || (band.dropped && visible);
            if (isNew && band.distance <= aheadScreens * screen) {
                band.submitted = surface.version;
                band.dropped = false;
                const auto number = static_cast<int>(i);
                if (!pool_.submit({surface.id, number, surface.version, surface.list, band.pixels, band.distance})) {
                    ++outstanding_;
                }
            }
            if (visible) ++waiting_;
        }
        if (visible != band.visible) {
            band.visible = visible;
            lookChanged = true;
        }
        anyShown |= visible && !band.picture.isNull();
        if (visible && !surface.missing.empty()) missesPictures_ = true;
    }
    if (lookChanged && surface.bands.size() > 1) ++surface.shown;
    if (anyShown) return LookKind::picture;
    // Until the surface is painted, a rectangle of its background colour is shown.
    if (isVisible && !state.backgroundColor.isClear() && !hasRoundCorners(state) && !corners) {
        view.want.color = state.backgroundColor;
        return LookKind::rect;
    }
    return LookKind::none;
}

void SceneComposer::takeList(MountedView& view, const Place& place) {
    Surface& surface = *view.surface;
    const ViewState& state = *view.state;
    auto list = std::make_shared<DisplayList>();
    list->scale = scale_;
    list->pictures = &store_;
    surface.missing.clear();
    CGRect overflow({}, state.frame.size);
    addEntries(*list, surface, view, true, state.clipsToBounds ? nullptr : &overflow, {});
    if (std::holds_alternative<BlurContent>(state.content) && view.parent) takeBeneath(*list, surface, view);
    double margin = std::max({shadowMargin(state.shadow), -overflow.minX(), -overflow.minY(),
                              overflow.maxX() - state.frame.width(), overflow.maxY() - state.frame.height()});
    if (margin > 0)
        margin = std::ceil(std::min(margin, std::max(maximumOverflow, shadowMargin(state.shadow))) * scale_);
    // A rotating picture gets an edge of clear pixels, so that filtering smooths its edges.
    if (state.rotation) margin = std::max(margin, 1.0);
    list->margin = static_cast<int>(margin);

    surface.usesGround = false;
    list->corners = surface.corners;
    if (list->margin == 0 && !list->corners && !list->beneath) {
        if (state.backgroundColor.alpha >= 1 && !hasRoundCorners(state)) {
            list->isOpaque = true;
            list->ground = state.backgroundColor;
        } else if (place.ground && !surface.groundRefused && view.role == MountRole::surface && isAlone(view)) {
            list->isOpaque = true;
            list->ground = *place.ground;
            surface.usesGround = true;
            surface.ground = *place.ground;
        }
    }
    const auto pixels = [&](double points) {
        return static_cast<int>(std::ceil(points * scale_ - 1e-6)) + 2 * list->margin;
    };
    const QSize size(std::min(pixels(state.frame.width()), maximumPictureWidth),
                     static_cast<int>(std::min(std::ceil(state.frame.height() * scale_ - 1e-6), 1e9)) +
                         2 * list->margin);
    surface.margin = list->margin;
    surface.list = std::move(list);
    surface.version = ++lastVersion_;
    divideIntoBands(surface, size);
    ++statistics_.listsTaken;
}

void SceneComposer::addEntries(DisplayList& list, Surface& surface, MountedView& view, bool isRoot, CGRect* overflow,
                               CGPoint origin, Below below) {
    const std::size_t index = list.entries.size();
    list.entries.push_back({view.state, 0, {}, false});
    const auto* image = std::get_if<ImageContent>(&view.state->content);
    if (!image || !image->image) {
        view.lastImage.reset();
        view.lastPicture = {};
    } else if (!image->image->isSymbol()) {
        const CGRect placed = placedImage(image->image->size(), view.state->frame.size, image->contentMode);
        const PictureKey key = PictureStore::keyFor(*image->image, placed.width() * scale_, placed.height() * scale_);
        bool isKnown = true;
        QImage picture;
        if (!placed.isEmpty() && !PictureStore::isSmall(*image->image, key)) {
            picture = store_.request(image->image, key, isKnown);
            // A picture that cannot be decoded is not requested again.
            list.entries[index].pictureMissing = !isKnown || picture.isNull();
            if (!isKnown) surface.missing.push_back(key);
        }
        if (isKnown) {
            view.lastImage = image->image;
            view.lastPicture = picture;
        } else if (view.lastImage) {
            // The previous image, a thumbnail for instance, is painted until the new one is decoded.
            auto state = std::make_shared<ViewState>(*view.state);
            std::get<ImageContent>(state->content).image = view.lastImage;
            list.entries[index].state = std::move(state);
            picture = view.lastPicture;
            list.entries[index].pictureMissing = false;
        }
        list.entries[index].picture = std::move(picture);
    }
    if (!isRoot && overflow) {
        const ViewState& state = *view.state;
        const double margin = shadowMargin(state.shadow);
        const CGRect covered = CGRect(origin, state.frame.size).insetBy(-margin, -margin);
        const double x0 = std::min(overflow->minX(), covered.minX()), y0 = std::min(overflow->minY(), covered.minY());
        *overflow = {x0, y0, std::max(overflow->maxX(), covered.maxX()) - x0,
                     std::max(overflow->maxY(), covered.maxY()) - y0};
    }
    if (!isRoot || view.role == MountRole::surface) {
        const CGPoint bounds = view.state->boundsOrigin;
        for (MountedView* child : view.children) {
            const bool isWanted = below == Below::everything || child->role == MountRole::painted;
            if (!isWanted || child->state->hidden) continue;
            const CGPoint at{origin.x - bounds.x + child->state->frame.minX(),
                             origin.y - bounds.y + child->state->frame.minY()};
            addEntries(list, surface, *child, false, !isRoot && view.state->clipsToBounds ? nullptr : overflow, at,
                       below);
        }
    }
    list.entries[index].end = list.entries.size();
}

void SceneComposer::takeBeneath(DisplayList& list, Surface& surface, const MountedView& blur) {
    const MountedView& parent = *blur.parent;
    auto ground = std::make_shared<ViewState>();
    ground->frame = CGRect({}, parent.state->frame.size);
    ground->boundsOrigin = parent.state->boundsOrigin;
    ground->backgroundColor = parent.state->backgroundColor;
    ground->content = parent.state->content;
    auto beneath = std::make_shared<DisplayList>();
    beneath->scale = scale_;
    beneath->pictures = &store_;
    MountedView stand;
    stand.state = ground;
    addEntries(*beneath, surface, stand, true, nullptr, {});
    for (MountedView* sibling : parent.children) {
        if (sibling == &blur) break;
        if (!sibling->state->hidden) addEntries(*beneath, surface, *sibling, false, nullptr, {}, Below::everything);
    }
    beneath->entries.front().end = beneath->entries.size();
    list.beneath = std::move(beneath);
    const CGPoint origin = blur.state->frame.origin;
    list.beneathOrigin = {origin.x - ground->boundsOrigin.x, origin.y - ground->boundsOrigin.y};
}

void SceneComposer::divideIntoBands(Surface& surface, QSize pixels) {
    if (surface.pixels == pixels && !surface.bands.empty()) return;
    surface.pixels = pixels;
    const int height = pixels.height() <= maximumUndividedHeight ? pixels.height() : bandHeight;
    const auto count = static_cast<std::size_t>((pixels.height() + height - 1) / std::max(height, 1));
    // The remaining bands show their old pictures until the new ones are painted.
    surface.bands.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
        const int top = static_cast<int>(i) * height;
        surface.bands[i].pixels = QRect(0, top, pixels.width(), std::min(height, pixels.height() - top));
    }
    ++surface.shown;
}

bool SceneComposer::isAlone(const MountedView& view) const {
    if (!view.parent) return true;
    for (const MountedView* sibling : view.parent->children) {
        if (sibling == &view) return true;
        const ViewState& state = *sibling->state;
        if (!state.hidden && sibling->look != LookKind::none && state.frame.intersects(view.state->frame)) return false;
    }
    return true;
}

bool SceneComposer::prepareVideo(MountedView& view, const Place& place, const Region& frame, bool isExact) {
    const auto* content = std::get_if<PlayerContent>(&view.state->content);
    const auto* player = content ? dynamic_cast<const QtPlayer*>(content->engine.get()) : nullptr;
    const CGSize size = view.state->frame.size;
    const bool isVisible = !isExact || frame.intersects(place.clip);
    if (!player || !isVisible || view.state->frame.isEmpty()) {
        view.video = {};
        return false;
    }
    VideoPicture::Place shown;
    const auto pixels = [&](double points) {
        return static_cast<int>(std::clamp(std::floor(points * scale_ + 1e-6), 1.0, double(maximumPictureWidth)));
    };
    shown.bounds = {pixels(size.width), pixels(size.height)};
    shown.scale = scale_;
    if (view.state->transform.isIdentity())
        shown.corners = cornersWithin(place.corners, {{frame.x0, frame.y0}, size}, scale_);
    videos_.push_back(player->picture());
    const VideoPicture::Shown now = player->picture()->show(shown, workFinished_);
    view.video = now.picture;
    if (now.picture.isNull()) return false;
    view.want.videoShown = now.sequence;
    // A picture made for these bounds is shown pixel by pixel. One made for other bounds is scaled to fit until a new
    // picture is there.
    const CGSize exact{now.picture.width() / scale_, now.picture.height() / scale_};
    const CGRect fit = placedImage(exact, size, UIViewContentMode::scaleAspectFit);
    const bool isExactSize =
        std::abs(fit.width() - exact.width) * scale_ < 1.5 && std::abs(fit.height() - exact.height) * scale_ < 1.5;
    const CGSize placed = isExactSize ? exact : fit.size;
    view.want.videoRect = {{snap((size.width - placed.width) / 2), snap((size.height - placed.height) / 2)}, placed};
    return true;
}

bool SceneComposer::collectResults() {
    bool isSeen = false;
    for (PaintResult& result : pool_.takeResults()) {
        --outstanding_;
        ++statistics_.bandsPainted;
        MountedView* view = tree_.find(result.surface);
        if (!view || !view->surface) continue;
        Surface& surface = *view->surface;
        const auto index = static_cast<std::size_t>(result.band);
        if (index >= surface.bands.size()) continue;
        Band& band = surface.bands[index];
        const bool isCurrent = result.version == surface.version;
        // An outdated picture still replaces an older one.
        if (!isCurrent && (band.painted > result.version || result.picture.size() != band.pixels.size())) continue;
        if (isCurrent && band.painted != result.version && band.visible && waiting_ > 0) --waiting_;
        band.picture = std::move(result.picture);
        band.place = QRect(band.pixels.topLeft() - QPoint(surface.margin, surface.margin), band.picture.size());
        band.painted = result.version;
        ++surface.shown;
        isSeen |= band.visible;
    }
    const std::vector<PictureKey> decoded = store_.takeDecoded();
    if (decoded.empty()) return isSeen;
    for (const auto& [tag, view] : tree_.views()) {
        if (!view->surface || view->surface->missing.empty()) continue;
        const auto& missing = view->surface->missing;
        if (std::find_first_of(missing.begin(), missing.end(), decoded.begin(), decoded.end()) != missing.end()) {
            view->pictureDirty = true;
        }
    }
    return true;
}

void SceneComposer::dropDistantPictures() {
    // Counting the bytes visits all views, so it is done at every 32nd walk only.
    if (++walksSinceTrim_ < 32) return;
    walksSinceTrim_ = 0;
    struct Held {
        double distance;
        Band* band;
    };
    std::vector<Held> held;
    std::size_t bytes = 0;
    for (const auto& [tag, view] : tree_.views()) {
        if (!view->surface) continue;
        for (Band& band : view->surface->bands) {
            if (band.picture.isNull()) continue;
            bytes += static_cast<std::size_t>(band.picture.sizeInBytes());
            if (!band.visible) held.push_back({view->shown ? band.distance : 1e9, &band});
        }
    }
    if (bytes <= maximumPictureBytes) return;
    std::sort(held.begin(), held.end(), [](const Held& a, const Held& b) { return a.distance > b.distance; });
    for (const Held& one : held) {
        if (bytes <= maximumPictureBytes) break;
        bytes -= static_cast<std::size_t>(one.band->picture.sizeInBytes());
        one.band->picture = {};
        one.band->painted = 0;
        one.band->dropped = true;
    }
}

}  // namespace ostrel
