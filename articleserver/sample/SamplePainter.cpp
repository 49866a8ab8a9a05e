#include "articleserver/sample/SamplePainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace ostrel {

namespace {

constexpr double fullTurn = 2 * std::numbers::pi;

using Painter = void (*)(SampleBrush&);

Painter painterOf(SampleScene scene) {
    switch (scene) {
    case SampleScene::Ridges: return paintRidges;
    case SampleScene::Lake: return paintLake;
    case SampleScene::SeaDawn: return paintSeaDawn;
    case SampleScene::Dunes: return paintDunes;
    case SampleScene::NightCity: return paintNightCity;
    case SampleScene::Street: return paintStreet;
    case SampleScene::Forest: return paintForest;
    case SampleScene::Meadow: return paintMeadow;
    case SampleScene::Bowl: return paintBowl;
    case SampleScene::Pears: return paintPears;
    case SampleScene::Teapot: return paintTeapot;
    case SampleScene::Bicycle: return paintBicycle;
    case SampleScene::Harbour: return paintHarbour;
    }
    return paintRidges;
}

void addStop(cairo_pattern_t* pattern, double offset, const SampleBrush::Colour& colour) {
    cairo_pattern_add_color_stop_rgba(pattern, offset, colour.red, colour.green, colour.blue, colour.alpha);
}

}  // namespace

SampleBrush::SampleBrush(ServerPicture& picture, std::uint32_t seed)
    : context_(cairo_create(picture.surface())),
      width_(picture.width()),
      height_(picture.height()),
      state_(seed * 2654435761U + 12345U) {}

SampleBrush::~SampleBrush() { cairo_destroy(context_); }

double SampleBrush::random(double from, double to) {
    // A fixed generator, so that a seed draws the same picture everywhere (Marsaglia's xorshift).
    if (state_ == 0) state_ = 1;
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return from + (to - from) * (static_cast<double>(state_) / 4294967296.0);
}

int SampleBrush::randomIndex(int count) { return std::min(count - 1, static_cast<int>(random(0, count))); }

SampleBrush::Colour SampleBrush::mixed(const Colour& from, const Colour& to, double part) {
    return {from.red + (to.red - from.red) * part, from.green + (to.green - from.green) * part,
            from.blue + (to.blue - from.blue) * part, from.alpha + (to.alpha - from.alpha) * part};
}

void SampleBrush::setColour(const Colour& colour) {
    cairo_set_source_rgba(context_, colour.red, colour.green, colour.blue, colour.alpha);
}

void SampleBrush::fill(const Colour& colour) {
    setColour(colour);
    cairo_fill(context_);
}

void SampleBrush::fillVertical(const Colour& top, const Colour& bottom, double fromY, double toY) {
    cairo_pattern_t* gradient = cairo_pattern_create_linear(0, fromY, 0, toY);
    addStop(gradient, 0, top);
    addStop(gradient, 1, bottom);
    cairo_set_source(context_, gradient);
    cairo_fill(context_);
    cairo_pattern_destroy(gradient);
}

void SampleBrush::rectangle(double x, double y, double width, double height) {
    cairo_rectangle(context_, x, y, width, height);
}

void SampleBrush::ellipse(double centreX, double centreY, double radiusX, double radiusY) {
    cairo_save(context_);
    cairo_translate(context_, centreX, centreY);
    cairo_scale(context_, radiusX, radiusY);
    cairo_new_sub_path(context_);
    cairo_arc(context_, 0, 0, 1, 0, fullTurn);
    cairo_restore(context_);
}

void SampleBrush::glow(double x, double y, double radius, const Colour& colour) {
    cairo_pattern_t* light = cairo_pattern_create_radial(x, y, 0, x, y, radius);
    Colour half = colour;
    half.alpha *= 0.35;
    Colour none = colour;
    none.alpha = 0;
    addStop(light, 0, colour);
    addStop(light, 0.35, half);
    addStop(light, 1, none);
    cairo_set_source(context_, light);
    rectangle(x - radius, y - radius, 2 * radius, 2 * radius);
    cairo_fill(context_);
    cairo_pattern_destroy(light);
}

void SampleBrush::sky(const Colour& top, const Colour& middle, const Colour& bottom, double horizon) {
    cairo_pattern_t* gradient = cairo_pattern_create_linear(0, 0, 0, horizon);
    addStop(gradient, 0, top);
    addStop(gradient, 0.55, middle);
    addStop(gradient, 1, bottom);
    cairo_set_source(context_, gradient);
    cairo_paint(context_);
    cairo_pattern_destroy(gradient);
}

void SampleBrush::ridge(double baseY, double amplitude, double roughness, const Colour& top,
                        const Colour& bottom) {
    // Value noise in octaves: each half as high (times the roughness) and twice as fine as the one before.
    constexpr int octaves = 6;
    std::array<std::vector<double>, octaves> values;
    int cells = 2 + static_cast<int>(width_ / unit());
    for (auto& octave : values) {
        octave.resize(static_cast<std::size_t>(cells) + 2);
        for (double& value : octave) value = random(-1, 1);
        cells *= 2;
    }
    cairo_move_to(context_, -2, height_ + 2);
    const double step = std::max(1.0, width_ / 600);
    for (double x = -2; x <= width_ + step; x += step) {
        double sum = 0;
        double weight = 1;
        for (const auto& octave : values) {
            double place = std::clamp(x / width_, 0.0, 1.0) * static_cast<double>(octave.size() - 2);
            auto cell = static_cast<std::size_t>(place);
            double part = (1 - std::cos((place - static_cast<double>(cell)) * std::numbers::pi)) / 2;
            sum +=
                weight * (octave[cell] * (1 - part) + octave[std::min(cell + 1, octave.size() - 1)] * part);
            weight *= 0.5 * roughness;
        }
        cairo_line_to(context_, x, baseY - amplitude * sum);
    }
    cairo_line_to(context_, width_ + 2, height_ + 2);
    cairo_close_path(context_);
    fillVertical(top, bottom, baseY - amplitude, baseY + amplitude * 1.6);
}

void SampleBrush::vignette(double strength) {
    double radius = std::hypot(width_, height_) / 2;
    cairo_pattern_t* shade =
        cairo_pattern_create_radial(width_ / 2, height_ / 2, radius * 0.55, width_ / 2, height_ / 2, radius);
    addStop(shade, 0, {0, 0, 0, 0});
    addStop(shade, 1, {0, 0, 0, strength});
    cairo_set_source(context_, shade);
    cairo_paint(context_);
    cairo_pattern_destroy(shade);
}

ServerPicture paintScene(SampleScene scene, int width, int height, std::uint32_t seed) {
    ServerPicture picture(width, height);
    SampleBrush brush(picture, seed);
    painterOf(scene)(brush);
    brush.vignette(0.16);
    return picture;
}

ServerPicture paintPortrait(int side, std::uint32_t seed) {
    using Colour = SampleBrush::Colour;
    struct Look {
        Colour ground;
        Colour skin;
        Colour hair;
        Colour shirt;
    };
    static constexpr std::array<Look, 4> looks = {{
        {{0.95, 0.78, 0.55}, {0.93, 0.75, 0.62}, {0.33, 0.20, 0.14}, {0.20, 0.42, 0.50}},
        {{0.62, 0.78, 0.78}, {0.55, 0.37, 0.27}, {0.11, 0.09, 0.09}, {0.90, 0.72, 0.30}},
        {{0.85, 0.66, 0.64}, {0.96, 0.82, 0.72}, {0.76, 0.50, 0.24}, {0.36, 0.33, 0.52}},
        {{0.66, 0.72, 0.86}, {0.90, 0.74, 0.58}, {0.14, 0.12, 0.14}, {0.74, 0.32, 0.28}},
    }};
    const Look& look = looks[seed % looks.size()];
    ServerPicture picture(side, side);
    SampleBrush brush(picture, seed);
    const double s = side;
    const bool isLong = seed % 2 == 1;

    brush.rectangle(0, 0, s, s);
    brush.fillVertical(SampleBrush::mixed(look.ground, {1, 1, 1}, 0.25),
                       SampleBrush::mixed(look.ground, {0.2, 0.15, 0.25}, 0.22), 0, s);
    brush.glow(s * 0.3, s * 0.25, s * 0.6, {1, 1, 1, 0.35});
    const Colour darkHair = SampleBrush::mixed(look.hair, {0, 0, 0}, 0.3);
    if (isLong) {
        brush.ellipse(s * 0.5, s * 0.50, s * 0.25, s * 0.32);
        brush.rectangle(s * 0.26, s * 0.48, s * 0.48, s * 0.27);
        brush.fillVertical(look.hair, darkHair, s * 0.2, s * 0.8);
    }
    // Shoulders, neck, collar.
    brush.ellipse(s * 0.5, s * 1.04, s * 0.38, s * 0.31);
    brush.fillVertical(SampleBrush::mixed(look.shirt, {1, 1, 1}, 0.12), look.shirt, s * 0.73, s);
    brush.rectangle(s * 0.43, s * 0.60, s * 0.14, s * 0.17);
    brush.ellipse(s * 0.5, s * 0.765, s * 0.07, s * 0.05);
    brush.fill(SampleBrush::mixed(look.skin, {0.35, 0.15, 0.1}, 0.18));
    // Face.
    brush.ellipse(s * 0.5, s * 0.47, s * 0.165, s * 0.205);
    brush.fillVertical(SampleBrush::mixed(look.skin, {1, 1, 1}, 0.10), look.skin, s * 0.27, s * 0.68);
    brush.glow(s * 0.41, s * 0.54, s * 0.06, {0.9, 0.35, 0.3, 0.28});
    brush.glow(s * 0.59, s * 0.54, s * 0.06, {0.9, 0.35, 0.3, 0.28});
    // Hair over the forehead: a cap whose lower edge sweeps to one side.
    cairo_t* context = brush.context();
    cairo_move_to(context, s * 0.31, s * 0.50);
    cairo_curve_to(context, s * 0.27, s * 0.14, s * 0.73, s * 0.14, s * 0.69, s * 0.50);
    cairo_curve_to(context, s * 0.67, s * 0.40, s * 0.64, s * 0.36, s * 0.58, s * 0.335);
    cairo_curve_to(context, s * 0.50, s * 0.40, s * 0.38, s * 0.38, s * 0.345, s * 0.40);
    cairo_curve_to(context, s * 0.33, s * 0.43, s * 0.325, s * 0.46, s * 0.31, s * 0.50);
    cairo_close_path(context);
    brush.fillVertical(SampleBrush::mixed(look.hair, {1, 1, 1}, 0.12), darkHair, s * 0.2, s * 0.52);
    // Eyes, brows, a smile.
    const Colour dark{0.16, 0.11, 0.10, 0.9};
    for (double side2 : {-1.0, 1.0}) {
        brush.ellipse(s * (0.5 + side2 * 0.068), s * 0.475, s * 0.014, s * 0.018);
        brush.fill(dark);
        cairo_set_line_width(context, s * 0.011);
        cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
        cairo_move_to(context, s * (0.5 + side2 * 0.045), s * 0.436);
        cairo_curve_to(context, s * (0.5 + side2 * 0.06), s * 0.427, s * (0.5 + side2 * 0.08), s * 0.427,
                       s * (0.5 + side2 * 0.095), s * 0.437);
        brush.setColour(SampleBrush::mixed(look.hair, {0, 0, 0}, 0.2));
        cairo_stroke(context);
    }
    cairo_move_to(context, s * 0.45, s * 0.575);
    cairo_curve_to(context, s * 0.475, s * 0.602, s * 0.525, s * 0.602, s * 0.55, s * 0.575);
    brush.setColour({0.62, 0.22, 0.2, 0.85});
    cairo_stroke(context);
    return picture;
}

}  // namespace ostrel
