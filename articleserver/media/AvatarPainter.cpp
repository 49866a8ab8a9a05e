#include "articleserver/media/AvatarPainter.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/media/ServerPicture.h"

#include <pango/pangocairo.h>

#include <algorithm>
#include <array>

namespace articleserver {

namespace {

constexpr std::size_t keptAvatars = 256;
/// The heights of a letter and of its picture have this ratio.
constexpr double letterHeight = 0.40;

struct Colours {
    double top[3];
    double bottom[3];
};

// The colours are dark enough for white letters: their contrast is at least 3:1 at the top and higher below.
constexpr std::array<Colours, 12> palette = {{
    {{0.86, 0.42, 0.36}, {0.72, 0.25, 0.30}},
    {{0.85, 0.50, 0.25}, {0.73, 0.34, 0.18}},
    {{0.72, 0.55, 0.20}, {0.58, 0.41, 0.12}},
    {{0.46, 0.61, 0.30}, {0.28, 0.47, 0.24}},
    {{0.26, 0.62, 0.48}, {0.13, 0.46, 0.40}},
    {{0.22, 0.60, 0.64}, {0.11, 0.43, 0.52}},
    {{0.30, 0.56, 0.80}, {0.17, 0.39, 0.66}},
    {{0.42, 0.50, 0.82}, {0.27, 0.33, 0.67}},
    {{0.58, 0.47, 0.80}, {0.42, 0.30, 0.65}},
    {{0.73, 0.44, 0.72}, {0.56, 0.27, 0.58}},
    {{0.83, 0.42, 0.56}, {0.68, 0.24, 0.42}},
    {{0.49, 0.55, 0.61}, {0.33, 0.39, 0.46}},
}};

struct Unreference {
    void operator()(gpointer object) const { g_object_unref(object); }
};

struct DestroyPainter {
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

}  // namespace

struct AvatarPainter::FontMap {
    std::unique_ptr<PangoFontMap, Unreference> map{pango_cairo_font_map_new()};
};

AvatarPainter::AvatarPainter() = default;

AvatarPainter::~AvatarPainter() = default;

std::shared_ptr<const std::string> AvatarPainter::avatar(std::int64_t user, std::string_view name) {
    std::string initial = nameInitial(name);
    std::string key = std::to_string(user) + " " + initial;
    std::lock_guard lock(mutex_);
    auto found = kept_.find(key);
    if (found != kept_.end()) return found->second;
    auto drawn = std::make_shared<const std::string>(draw(user, initial));
    if (order_.size() >= keptAvatars) {
        kept_.erase(order_.front());
        order_.pop_front();
    }
    order_.push_back(key);
    kept_.emplace(std::move(key), drawn);
    return drawn;
}

std::string AvatarPainter::draw(std::int64_t user, const std::string& initial) {
    const int side = ServerLimits::storedAvatarSide;
    // The step of 5 gives neighbouring ids different colours and reaches all 12, since 5 and 12 have no
    // common factor.
    const Colours& colours = palette[static_cast<std::uint64_t>(user) * 5 % palette.size()];
    ServerPicture picture(side, side);
    std::unique_ptr<cairo_t, DestroyPainter> context(cairo_create(picture.surface()));

    cairo_pattern_t* ground = cairo_pattern_create_linear(0, 0, side * 0.35, side);
    cairo_pattern_add_color_stop_rgb(ground, 0, colours.top[0], colours.top[1], colours.top[2]);
    cairo_pattern_add_color_stop_rgb(ground, 1, colours.bottom[0], colours.bottom[1], colours.bottom[2]);
    cairo_set_source(context.get(), ground);
    cairo_paint(context.get());
    cairo_pattern_destroy(ground);

    // The search for the system's fonts is slow, so the font map is made for the first avatar, not at the
    // start.
    if (!fonts_) fonts_ = std::make_unique<FontMap>();
    std::unique_ptr<PangoContext, Unreference> texts(pango_font_map_create_context(fonts_->map.get()));
    std::unique_ptr<PangoLayout, Unreference> layout(pango_layout_new(texts.get()));
    PangoFontDescription* font = pango_font_description_from_string("Noto Sans CJK SC, Sans Medium");
    pango_font_description_set_absolute_size(font, side * 0.5 * PANGO_SCALE);
    pango_layout_set_font_description(layout.get(), font);
    pango_font_description_free(font);
    pango_layout_set_text(layout.get(), initial.c_str(), static_cast<int>(initial.size()));

    // Scripts differ in height and bearing, so the ink of the letter is scaled to one size and centred.
    PangoRectangle ink{};
    pango_layout_get_extents(layout.get(), &ink, nullptr);
    if (ink.width > 0 && ink.height > 0) {
        double width = static_cast<double>(ink.width) / PANGO_SCALE;
        double height = static_cast<double>(ink.height) / PANGO_SCALE;
        double scale = std::min(side * letterHeight / height, side * 0.56 / width);
        cairo_translate(context.get(), side / 2.0, side / 2.0);
        cairo_scale(context.get(), scale, scale);
        cairo_translate(context.get(), -static_cast<double>(ink.x) / PANGO_SCALE - width / 2,
                        -static_cast<double>(ink.y) / PANGO_SCALE - height / 2);
        cairo_set_source_rgb(context.get(), 1, 1, 1);
        // A path scales well, while glyph images would show the hinting of the unscaled size.
        pango_cairo_layout_path(context.get(), layout.get());
        cairo_fill(context.get());
    }
    return picture.png();
}

}  // namespace articleserver
