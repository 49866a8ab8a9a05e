#include "articleserver/sample/SamplePainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace ostrel {

namespace {

using Colour = SampleBrush::Colour;

struct SkyColours {
    Colour top;
    Colour middle;
    Colour bottom;
    Colour far;   ///< the palest ridge
    Colour near;  ///< the darkest
    Colour sun;
};

constexpr std::array<SkyColours, 4> skies = {{
    {{0.30, 0.40, 0.62},
     {0.86, 0.66, 0.62},
     {0.99, 0.87, 0.68},
     {0.74, 0.62, 0.68},
     {0.16, 0.19, 0.30},
     {1, 0.95, 0.80}},
    {{0.36, 0.62, 0.82},
     {0.68, 0.85, 0.92},
     {0.94, 0.97, 0.93},
     {0.66, 0.79, 0.86},
     {0.13, 0.31, 0.33},
     {1, 1, 0.94}},
    {{0.22, 0.17, 0.38},
     {0.72, 0.36, 0.47},
     {0.99, 0.68, 0.44},
     {0.66, 0.39, 0.50},
     {0.13, 0.09, 0.22},
     {1, 0.86, 0.62}},
    {{0.58, 0.70, 0.74},
     {0.83, 0.87, 0.84},
     {0.96, 0.94, 0.87},
     {0.75, 0.81, 0.78},
     {0.20, 0.30, 0.27},
     {1, 0.99, 0.93}},
}};

const SkyColours& chooseSky(SampleBrush& brush) {
    return skies[static_cast<std::size_t>(brush.randomIndex(static_cast<int>(skies.size())))];
}

void paintSun(SampleBrush& brush, double x, double y, double radius, const Colour& colour) {
    Colour halo = colour;
    halo.alpha = 0.55;
    brush.glow(x, y, radius * 7, halo);
    brush.ellipse(x, y, radius, radius);
    brush.fill(colour);
}

void paintClouds(SampleBrush& brush, double fromY, double toY, const Colour& colour) {
    for (int cloud = 0; cloud < 7; ++cloud) {
        double x = brush.random(-0.1, 1.0) * brush.width();
        double y = brush.random(fromY, toY);
        double length = brush.random(0.12, 0.34) * brush.width();
        for (int puff = 0; puff < 9; ++puff) {
            double along = puff / 8.0;
            double thickness = std::sin(along * std::numbers::pi) * brush.unit() * 0.018 + 1;
            Colour soft = colour;
            soft.alpha = brush.random(0.06, 0.16);
            brush.ellipse(x + along * length, y + brush.random(-0.006, 0.006) * brush.height(), length * 0.16,
                          thickness);
            brush.fill(soft);
        }
    }
}

void paintPine(SampleBrush& brush, double x, double baseY, double height, const Colour& colour) {
    cairo_t* context = brush.context();
    constexpr int tiers = 6;
    for (int tier = 0; tier < tiers; ++tier) {
        double part = tier / static_cast<double>(tiers);
        double top = baseY - height * (1 - part * 0.86);
        double bottom = top + height * 0.30;
        double half = height * (0.055 + 0.17 * (part + 0.16));
        cairo_move_to(context, x, top);
        cairo_curve_to(context, x + half * 0.25, top + height * 0.12, x + half * 0.6, bottom - height * 0.04,
                       x + half, bottom);
        cairo_curve_to(context, x + half * 0.4, bottom - height * 0.03, x - half * 0.4,
                       bottom - height * 0.03, x - half, bottom);
        cairo_curve_to(context, x - half * 0.6, bottom - height * 0.04, x - half * 0.25, top + height * 0.12,
                       x, top);
    }
    brush.rectangle(x - height * 0.02, baseY - height * 0.12, height * 0.04, height * 0.14);
    brush.fill(colour);
}

/// Short light strokes on water that thin out with distance.
void paintGlitter(SampleBrush& brush, double fromY, double toY, double centreX, double spread,
                  const Colour& colour) {
    for (int index = 0; index < 420; ++index) {
        double depth = std::pow(brush.random(0, 1), 1.6);
        double y = fromY + (toY - fromY) * depth;
        double x = centreX + brush.random(-1, 1) * brush.random(0.1, 1) * spread * (0.25 + depth);
        double length = brush.unit() * (0.006 + 0.035 * depth) * brush.random(0.5, 1.3);
        Colour light = colour;
        light.alpha *= brush.random(0.15, 0.75);
        brush.ellipse(x, y, length, std::max(0.6, brush.unit() * 0.0016 * (0.4 + depth)));
        brush.fill(light);
    }
}

}  // namespace

void paintRidges(SampleBrush& brush) {
    const SkyColours& colours = chooseSky(brush);
    double h = brush.height();
    brush.sky(colours.top, colours.middle, colours.bottom, h * 0.62);
    paintSun(brush, brush.width() * brush.random(0.2, 0.8), h * brush.random(0.26, 0.40), brush.unit() * 0.04,
             colours.sun);
    paintClouds(brush, h * 0.10, h * 0.34, {1, 1, 1});
    constexpr int layers = 6;
    for (int layer = 0; layer < layers; ++layer) {
        double near = layer / static_cast<double>(layers - 1);
        Colour crest = SampleBrush::mixed(colours.far, colours.near, std::pow(near, 0.9));
        Colour foot = SampleBrush::mixed(crest, colours.bottom, 0.42 * (1 - near) + 0.05);
        brush.ridge(h * (0.47 + 0.44 * near), h * (0.105 - 0.035 * near), 1.02, crest, foot);
    }
}

void paintLake(SampleBrush& brush) {
    const SkyColours& colours = chooseSky(brush);
    double w = brush.width();
    double h = brush.height();
    double shore = h * 0.58;
    brush.sky(colours.top, colours.middle, colours.bottom, shore);
    double sunX = w * brush.random(0.25, 0.75);
    paintSun(brush, sunX, h * 0.30, brush.unit() * 0.035, colours.sun);
    paintClouds(brush, h * 0.08, h * 0.30, {1, 1, 1});
    for (int layer = 0; layer < 3; ++layer) {
        double near = (layer + 1) / 3.0;
        Colour crest = SampleBrush::mixed(colours.far, colours.near, near * 0.85);
        brush.ridge(h * (0.40 + 0.055 * layer), h * (0.10 - 0.02 * layer), 1.0, crest,
                    SampleBrush::mixed(crest, colours.bottom, 0.35));
    }
    // The water mirrors what stands above the shore, darker and stretched by a little.
    cairo_t* context = brush.context();
    cairo_surface_t* target = cairo_get_target(context);
    cairo_surface_flush(target);
    cairo_surface_t* copy =
        cairo_image_surface_create(CAIRO_FORMAT_ARGB32, static_cast<int>(w), static_cast<int>(h));
    cairo_t* copying = cairo_create(copy);
    cairo_set_source_surface(copying, target, 0, 0);
    cairo_paint(copying);
    cairo_destroy(copying);
    cairo_save(context);
    brush.rectangle(0, shore, w, h - shore);
    cairo_clip(context);
    cairo_translate(context, 0, 2 * shore);
    cairo_scale(context, 1, -1);
    cairo_set_source_surface(context, copy, 0, 0);
    cairo_paint(context);
    cairo_restore(context);
    cairo_surface_destroy(copy);
    brush.rectangle(0, shore, w, h - shore);
    Colour deep = colours.near;
    deep.alpha = 0.62;
    Colour shallow = colours.near;
    shallow.alpha = 0.10;
    brush.fillVertical(shallow, deep, shore, h);
    paintGlitter(brush, shore + h * 0.01, h, sunX, w * 0.16, colours.sun);
    for (int pine = 0; pine < 16; ++pine) {
        bool isLeft = pine % 2 == 0;
        double edge = std::pow(brush.random(0, 1), 1.5) * 0.30;
        double x = w * (isLeft ? edge - 0.02 : 1.02 - edge);
        double y = h * brush.random(0.90, 1.05);
        paintPine(brush, x, y, h * brush.random(0.26, 0.48) * (1.1 - edge),
                  SampleBrush::mixed(colours.near, {0.02, 0.05, 0.05}, 0.5));
    }
}

void paintSeaDawn(SampleBrush& brush) {
    const SkyColours& colours = chooseSky(brush);
    double w = brush.width();
    double h = brush.height();
    double horizon = h * brush.random(0.50, 0.60);
    brush.sky(colours.top, colours.middle, colours.bottom, horizon);
    double sunX = w * brush.random(0.3, 0.7);
    paintSun(brush, sunX, horizon - h * 0.09, brush.unit() * 0.05, colours.sun);
    paintClouds(brush, h * 0.10, horizon - h * 0.16, SampleBrush::mixed({1, 1, 1}, colours.bottom, 0.4));
    brush.rectangle(0, horizon, w, h - horizon);
    brush.fillVertical(SampleBrush::mixed(colours.bottom, colours.near, 0.35), colours.near, horizon, h);
    for (int wave = 0; wave < 26; ++wave) {
        double depth = std::pow((wave + 1) / 26.0, 1.7);
        double y = horizon + (h - horizon) * depth;
        cairo_t* context = brush.context();
        double phase = brush.random(0, 6);
        cairo_move_to(context, 0, y);
        for (double x = 0; x <= w; x += w / 80) {
            cairo_line_to(context, x,
                          y + std::sin(x / w * 18 / (0.4 + depth) + phase) * h * 0.005 * (0.2 + depth));
        }
        Colour line = SampleBrush::mixed(colours.sun, colours.middle, 0.5);
        line.alpha = 0.10 + 0.10 * (1 - depth);
        brush.setColour(line);
        cairo_set_line_width(context, std::max(1.0, h * 0.003 * (0.4 + depth)));
        cairo_stroke(context);
    }
    paintGlitter(brush, horizon + h * 0.006, h, sunX, w * 0.14, colours.sun);
}

void paintDunes(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    brush.sky({0.28, 0.50, 0.72}, {0.62, 0.77, 0.85}, {0.97, 0.88, 0.74}, h * 0.5);
    paintSun(brush, w * brush.random(0.2, 0.8), h * 0.22, brush.unit() * 0.035, {1, 0.98, 0.9});
    cairo_t* context = brush.context();
    for (int dune = 0; dune < 6; ++dune) {
        double near = dune / 5.0;
        double y = h * (0.46 + 0.44 * near);
        double crest = w * brush.random(0.15, 0.85);
        double rise = h * brush.random(0.07, 0.15);
        Colour lit = SampleBrush::mixed({0.96, 0.82, 0.62}, {0.86, 0.55, 0.29}, near);
        Colour shaded = SampleBrush::mixed({0.84, 0.66, 0.54}, {0.47, 0.25, 0.17}, near);
        cairo_move_to(context, 0, h);
        cairo_line_to(context, 0, y + rise * 0.3);
        cairo_curve_to(context, crest * 0.5, y + rise * 0.4, crest * 0.8, y - rise * 0.9, crest, y - rise);
        cairo_curve_to(context, crest + (w - crest) * 0.3, y - rise * 0.4, crest + (w - crest) * 0.6,
                       y + rise * 0.5, w, y + rise * 0.15);
        cairo_line_to(context, w, h);
        cairo_close_path(context);
        brush.fillVertical(lit, SampleBrush::mixed(lit, shaded, 0.45), y - rise, y + h * 0.22);
        cairo_move_to(context, crest, y - rise);
        cairo_curve_to(context, crest - w * 0.03, y + h * 0.03, crest + w * 0.09, y + h * 0.12,
                       crest - w * 0.02, h);
        cairo_line_to(context, w, h);
        cairo_line_to(context, w, y + rise * 0.15);
        cairo_curve_to(context, crest + (w - crest) * 0.6, y + rise * 0.5, crest + (w - crest) * 0.3,
                       y - rise * 0.4, crest, y - rise);
        cairo_close_path(context);
        brush.fillVertical(shaded, SampleBrush::mixed(shaded, lit, 0.5), y - rise, y + h * 0.25);
    }
}

void paintForest(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    bool isAutumn = brush.randomIndex(2) == 1;
    Colour mist = isAutumn ? Colour{0.96, 0.88, 0.74} : Colour{0.88, 0.94, 0.88};
    Colour dark = isAutumn ? Colour{0.24, 0.14, 0.11} : Colour{0.05, 0.17, 0.15};
    brush.sky(SampleBrush::mixed(mist, {0.5, 0.65, 0.7}, 0.35), mist, mist, h * 0.7);
    brush.glow(w * brush.random(0.3, 0.7), h * 0.28, brush.unit() * 0.7, {1, 1, 0.92, 0.8});
    for (int layer = 0; layer < 6; ++layer) {
        double near = layer / 5.0;
        Colour colour = SampleBrush::mixed(SampleBrush::mixed(mist, dark, 0.18), dark, near);
        double base = h * (0.52 + 0.50 * near);
        double height = h * (0.22 + 0.36 * near);
        double spacing = height * 0.24;
        for (double x = -spacing; x < w + spacing; x += spacing * brush.random(0.7, 1.5)) {
            Colour tree = colour;
            if (isAutumn && layer > 1 && brush.randomIndex(4) == 0) {
                tree = SampleBrush::mixed(colour, {0.80, 0.40, 0.12}, 0.6 - 0.2 * near);
            }
            paintPine(brush, x, base + brush.random(-0.02, 0.02) * h, height * brush.random(0.7, 1.15), tree);
        }
        brush.rectangle(0, base - h * 0.03, w, h - base + h * 0.04);
        Colour fog = mist;
        fog.alpha = 0.34 * (1 - near);
        brush.fillVertical(colour, SampleBrush::mixed(colour, mist, 0.35 * (1 - near)), base - h * 0.03, h);
        brush.rectangle(0, base - height * 0.4, w, height * 0.6);
        Colour clear = fog;
        clear.alpha = 0;
        brush.fillVertical(clear, fog, base - height * 0.4, base + height * 0.2);
    }
}

void paintMeadow(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    brush.sky({0.38, 0.66, 0.86}, {0.70, 0.87, 0.94}, {0.96, 0.97, 0.90}, h * 0.5);
    paintClouds(brush, h * 0.06, h * 0.30, {1, 1, 1});
    brush.ridge(h * 0.46, h * 0.05, 0.7, {0.55, 0.72, 0.66}, {0.62, 0.78, 0.62});
    brush.ridge(h * 0.54, h * 0.035, 0.6, {0.44, 0.66, 0.42}, {0.40, 0.62, 0.32});
    brush.rectangle(0, h * 0.58, w, h * 0.42);
    brush.fillVertical({0.45, 0.66, 0.34}, {0.17, 0.38, 0.17}, h * 0.56, h);
    static constexpr std::array<Colour, 5> petals = {
        {{0.93, 0.32, 0.30}, {0.98, 0.80, 0.28}, {0.96, 0.94, 0.92}, {0.64, 0.42, 0.78}, {0.95, 0.58, 0.66}}};
    cairo_t* context = brush.context();
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    for (int flower = 0; flower < 520; ++flower) {
        // Farther ones first, so that nearer ones cover them.
        double depth = std::pow(flower / 520.0, 1.5);
        double y = h * (0.58 + 0.46 * depth);
        double x = brush.random(-0.02, 1.02) * w;
        double size = brush.unit() * (0.003 + 0.022 * depth);
        double sway = brush.random(-1, 1) * size * 0.8;
        brush.setColour(SampleBrush::mixed({0.50, 0.70, 0.36}, {0.12, 0.32, 0.13}, depth));
        cairo_set_line_width(context, std::max(0.8, size * 0.16));
        cairo_move_to(context, x - sway, y + size * 4);
        cairo_curve_to(context, x - sway, y + size * 2, x, y + size * 2, x, y);
        cairo_stroke(context);
        Colour petal = petals[static_cast<std::size_t>(brush.randomIndex(5))];
        petal = SampleBrush::mixed({0.8, 0.9, 0.75}, petal, 0.45 + 0.55 * depth);
        double turn = brush.random(0, 1);
        for (int leaf = 0; leaf < 6; ++leaf) {
            double angle = (leaf + turn) * std::numbers::pi / 3;
            brush.ellipse(x + std::cos(angle) * size * 0.55, y + std::sin(angle) * size * 0.42, size * 0.42,
                          size * 0.34);
        }
        brush.fill(petal);
        brush.ellipse(x, y, size * 0.28, size * 0.24);
        brush.fill({0.96, 0.78, 0.30});
    }
}

}  // namespace ostrel
