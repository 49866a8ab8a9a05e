#include "articleserver/sample/SamplePainter.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace ostrel {

namespace {

using Colour = SampleBrush::Colour;

constexpr double halfTurn = std::numbers::pi;

/// A wall and a table top that meet at `edge`.
void paintRoom(SampleBrush& brush, const Colour& wall, const Colour& table, double edge) {
    double w = brush.width();
    double h = brush.height();
    brush.rectangle(0, 0, w, edge);
    brush.fillVertical(SampleBrush::mixed(wall, {1, 1, 1}, 0.10), SampleBrush::mixed(wall, {0, 0, 0}, 0.14),
                       0, edge);
    brush.glow(w * 0.22, h * 0.12, brush.unit() * 0.9, {1, 0.97, 0.88, 0.45});
    brush.rectangle(0, edge, w, h - edge);
    brush.fillVertical(SampleBrush::mixed(table, {1, 1, 1}, 0.16), SampleBrush::mixed(table, {0, 0, 0}, 0.28),
                       edge, h);
}

void paintShadow(SampleBrush& brush, double x, double y, double radiusX, double radiusY) {
    cairo_t* context = brush.context();
    cairo_save(context);
    cairo_translate(context, x, y);
    cairo_scale(context, 1, radiusY / radiusX);
    brush.glow(0, 0, radiusX * 1.25, {0.10, 0.05, 0.05, 0.6});
    cairo_restore(context);
}

/// Shading of a round body whose light comes from the upper left.
void fillRound(SampleBrush& brush, double x, double y, double radius, const Colour& colour) {
    cairo_pattern_t* body =
        cairo_pattern_create_radial(x - radius * 0.42, y - radius * 0.45, radius * 0.08, x, y, radius * 1.35);
    auto stop = [&](double at, const Colour& shade) {
        cairo_pattern_add_color_stop_rgb(body, at, shade.red, shade.green, shade.blue);
    };
    stop(0, SampleBrush::mixed(colour, {1, 1, 0.95}, 0.62));
    stop(0.35, colour);
    stop(1, SampleBrush::mixed(colour, {0.12, 0.04, 0.08}, 0.62));
    cairo_set_source(brush.context(), body);
    cairo_fill(brush.context());
    cairo_pattern_destroy(body);
}

void paintPear(SampleBrush& brush, double x, double baseY, double size, const Colour& colour) {
    cairo_t* context = brush.context();
    paintShadow(brush, x + size * 0.12, baseY - size * 0.02, size * 0.5, size * 0.1);
    cairo_move_to(context, x, baseY - size * 1.22);
    cairo_curve_to(context, x + size * 0.26, baseY - size * 1.20, x + size * 0.20, baseY - size * 0.86,
                   x + size * 0.40, baseY - size * 0.60);
    cairo_curve_to(context, x + size * 0.66, baseY - size * 0.20, x + size * 0.30, baseY, x, baseY);
    cairo_curve_to(context, x - size * 0.30, baseY, x - size * 0.66, baseY - size * 0.20, x - size * 0.40,
                   baseY - size * 0.60);
    cairo_curve_to(context, x - size * 0.20, baseY - size * 0.86, x - size * 0.26, baseY - size * 1.20, x,
                   baseY - size * 1.22);
    fillRound(brush, x, baseY - size * 0.5, size * 0.66, colour);
    brush.setColour({0.30, 0.20, 0.12});
    cairo_set_line_width(context, size * 0.05);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_move_to(context, x, baseY - size * 1.19);
    cairo_curve_to(context, x + size * 0.01, baseY - size * 1.32, x + size * 0.06, baseY - size * 1.38,
                   x + size * 0.12, baseY - size * 1.42);
    cairo_stroke(context);
}

void paintWindow(SampleBrush& brush, double x, double y, double width, double height, bool isLit) {
    brush.rectangle(x, y, width, height);
    brush.fill(isLit ? Colour{1, 0.86, 0.55} : Colour{0.24, 0.29, 0.36});
    brush.rectangle(x + width * 0.46, y, width * 0.08, height);
    brush.rectangle(x, y + height * 0.46, width, height * 0.05);
    brush.fill({0.95, 0.93, 0.88, 0.8});
}

void paintWheel(SampleBrush& brush, double x, double y, double radius) {
    cairo_t* context = brush.context();
    brush.setColour({0.13, 0.13, 0.15});
    cairo_set_line_width(context, radius * 0.09);
    cairo_arc(context, x, y, radius, 0, 2 * halfTurn);
    cairo_stroke(context);
    brush.setColour({0.80, 0.80, 0.80, 0.9});
    cairo_set_line_width(context, std::max(0.8, radius * 0.012));
    for (int spoke = 0; spoke < 24; ++spoke) {
        double angle = spoke * halfTurn / 12;
        cairo_move_to(context, x, y);
        cairo_line_to(context, x + std::cos(angle) * radius * 0.95, y + std::sin(angle) * radius * 0.95);
    }
    cairo_stroke(context);
    brush.ellipse(x, y, radius * 0.08, radius * 0.08);
    brush.fill({0.35, 0.35, 0.38});
}

}  // namespace

void paintPears(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    static constexpr std::array<Colour, 3> walls = {
        {{0.62, 0.68, 0.66}, {0.72, 0.60, 0.56}, {0.52, 0.57, 0.68}}};
    paintRoom(brush, walls[static_cast<std::size_t>(brush.randomIndex(3))], {0.62, 0.44, 0.30}, h * 0.60);
    static constexpr std::array<Colour, 3> skins = {
        {{0.80, 0.73, 0.26}, {0.63, 0.69, 0.25}, {0.84, 0.52, 0.24}}};
    paintPear(brush, w * 0.5 - u * 0.26, h * 0.74, u * 0.34, skins[0]);
    paintPear(brush, w * 0.5 + u * 0.24, h * 0.72, u * 0.31, skins[2]);
    paintPear(brush, w * 0.5 + u * 0.01, h * 0.82, u * 0.37, skins[1]);
    double x = w * 0.5 + u * 0.44;
    double y = h * 0.87;
    paintShadow(brush, x + u * 0.02, y + u * 0.055, u * 0.09, u * 0.02);
    brush.ellipse(x, y, u * 0.065, u * 0.062);
    fillRound(brush, x, y, u * 0.065, {0.44, 0.18, 0.32});
}

void paintTeapot(SampleBrush& brush) {
    cairo_t* context = brush.context();
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    paintRoom(brush, {0.78, 0.72, 0.62}, {0.40, 0.31, 0.27}, h * 0.63);
    static constexpr std::array<Colour, 3> glazes = {
        {{0.22, 0.46, 0.52}, {0.70, 0.35, 0.25}, {0.40, 0.50, 0.36}}};
    const Colour glaze = glazes[static_cast<std::size_t>(brush.randomIndex(3))];
    double x = w * 0.5 - u * 0.08;
    double y = h * 0.66;
    double r = u * 0.24;
    paintShadow(brush, x + r * 0.2, y + r * 0.82, r * 1.3, r * 0.26);
    // Handle and spout behind the body.
    brush.setColour(SampleBrush::mixed(glaze, {0, 0, 0}, 0.3));
    cairo_set_line_width(context, r * 0.16);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_arc(context, x - r * 1.02, y + r * 0.05, r * 0.48, halfTurn * 0.45, halfTurn * 1.55);
    cairo_stroke(context);
    cairo_move_to(context, x + r * 0.75, y + r * 0.35);
    cairo_curve_to(context, x + r * 1.25, y + r * 0.25, x + r * 1.15, y - r * 0.45, x + r * 1.55,
                   y - r * 0.55);
    cairo_line_to(context, x + r * 1.66, y - r * 0.42);
    cairo_curve_to(context, x + r * 1.42, y - r * 0.25, x + r * 1.45, y + r * 0.55, x + r * 0.7,
                   y + r * 0.62);
    cairo_close_path(context);
    fillRound(brush, x + r, y, r, glaze);
    brush.ellipse(x, y + r * 0.06, r * 1.06, r * 0.84);
    fillRound(brush, x, y, r * 1.05, glaze);
    brush.ellipse(x, y - r * 0.70, r * 0.50, r * 0.13);
    fillRound(brush, x, y - r * 0.70, r * 0.5, SampleBrush::mixed(glaze, {1, 1, 1}, 0.1));
    brush.ellipse(x, y - r * 0.90, r * 0.12, r * 0.12);
    fillRound(brush, x, y - r * 0.90, r * 0.12, glaze);
    // A cup with tea.
    double cupX = w * 0.5 + u * 0.34;
    double cupY = h * 0.76;
    double c = u * 0.10;
    paintShadow(brush, cupX + c * 0.2, cupY + c * 0.86, c * 1.2, c * 0.25);
    cairo_move_to(context, cupX - c, cupY);
    cairo_curve_to(context, cupX - c * 0.95, cupY + c * 0.9, cupX - c * 0.45, cupY + c * 0.95, cupX,
                   cupY + c * 0.95);
    cairo_curve_to(context, cupX + c * 0.45, cupY + c * 0.95, cupX + c * 0.95, cupY + c * 0.9, cupX + c,
                   cupY);
    cairo_close_path(context);
    fillRound(brush, cupX, cupY + c * 0.3, c, {0.93, 0.90, 0.84});
    brush.ellipse(cupX, cupY, c, c * 0.30);
    brush.fill({0.97, 0.95, 0.90});
    brush.ellipse(cupX, cupY + c * 0.02, c * 0.88, c * 0.23);
    brush.fill({0.66, 0.36, 0.14});
    for (int wisp = 0; wisp < 3; ++wisp) {
        double offset = (wisp - 1) * c * 0.4;
        cairo_set_line_width(context, c * 0.12);
        brush.setColour({1, 1, 1, 0.20});
        cairo_move_to(context, cupX + offset, cupY - c * 0.25);
        cairo_curve_to(context, cupX + offset + c * 0.4, cupY - c, cupX + offset - c * 0.5, cupY - c * 1.6,
                       cupX + offset + c * 0.1, cupY - c * 2.4);
        cairo_stroke(context);
    }
}

void paintBowl(SampleBrush& brush) {
    cairo_t* context = brush.context();
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    static constexpr std::array<Colour, 3> tables = {
        {{0.34, 0.42, 0.42}, {0.55, 0.38, 0.28}, {0.27, 0.30, 0.40}}};
    const Colour table = tables[static_cast<std::size_t>(brush.randomIndex(3))];
    brush.rectangle(0, 0, w, h);
    brush.fillVertical(SampleBrush::mixed(table, {1, 1, 1}, 0.18), SampleBrush::mixed(table, {0, 0, 0}, 0.25),
                       0, h);
    for (int grain = 0; grain < 60; ++grain) {
        double y = brush.random(0, h);
        cairo_move_to(context, 0, y);
        cairo_curve_to(context, w * 0.3, y + brush.random(-6, 6), w * 0.6, y + brush.random(-6, 6), w, y);
        brush.setColour({0, 0, 0, brush.random(0.02, 0.09)});
        cairo_set_line_width(context, brush.random(0.8, 2.5));
        cairo_stroke(context);
    }
    double x = w * 0.5;
    double y = h * 0.5;
    double r = u * 0.38;
    brush.glow(x + r * 0.12, y + r * 0.16, r * 1.35, {0, 0, 0, 0.75});
    brush.ellipse(x, y, r, r);
    fillRound(brush, x, y, r, {0.90, 0.88, 0.84});
    brush.ellipse(x, y, r * 0.90, r * 0.90);
    brush.fill({0.24, 0.36, 0.48});
    brush.ellipse(x, y, r * 0.86, r * 0.86);
    fillRound(brush, x, y, r * 0.9, {0.80, 0.53, 0.26});
    cairo_save(context);
    brush.ellipse(x, y, r * 0.84, r * 0.84);
    cairo_clip(context);
    // Noodles: swirls of pale strokes.
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    for (int noodle = 0; noodle < 90; ++noodle) {
        double radius = r * brush.random(0.12, 0.72);
        double start = brush.random(0, 2 * halfTurn);
        double centreX = x + brush.random(-0.16, 0.16) * r;
        double centreY = y + brush.random(-0.16, 0.16) * r;
        double length = brush.random(0.8, 2.4);
        brush.setColour({0.55, 0.33, 0.14, 0.5});
        cairo_set_line_width(context, r * 0.038);
        cairo_arc(context, centreX, centreY + r * 0.008, radius, start, start + length);
        cairo_stroke(context);
        brush.setColour(SampleBrush::mixed({0.97, 0.87, 0.62}, {0.92, 0.76, 0.46}, brush.random(0, 1)));
        cairo_set_line_width(context, r * 0.028);
        cairo_arc(context, centreX, centreY, radius, start, start + length);
        cairo_stroke(context);
    }
    for (int leaf = 0; leaf < 26; ++leaf) {
        double angle = brush.random(-0.2, 1.5);
        double distance = r * brush.random(0.25, 0.72);
        double size = r * brush.random(0.035, 0.06);
        brush.ellipse(x + std::cos(angle) * distance, y + std::sin(angle) * distance, size, size);
        brush.fill({0.24, 0.52, 0.22});
        brush.ellipse(x + std::cos(angle) * distance, y + std::sin(angle) * distance, size * 0.45,
                      size * 0.45);
        brush.fill({0.72, 0.86, 0.52});
    }
    cairo_restore(context);
    // Half an egg, upper left.
    double eggX = x - r * 0.36;
    double eggY = y - r * 0.30;
    brush.ellipse(eggX, eggY, r * 0.27, r * 0.22);
    fillRound(brush, eggX, eggY, r * 0.34, {0.98, 0.95, 0.90});
    brush.ellipse(eggX + r * 0.02, eggY, r * 0.14, r * 0.13);
    fillRound(brush, eggX, eggY, r * 0.16, {0.96, 0.66, 0.18});
    // Chopsticks beside the bowl.
    cairo_set_line_width(context, u * 0.014);
    for (double shift : {0.0, 0.035}) {
        brush.setColour({0.28, 0.12, 0.10});
        cairo_move_to(context, x + r * 0.98 + u * shift, y - r * 0.95);
        cairo_line_to(context, x + r * 1.12 + u * shift * 1.4, y + r * 1.02);
        cairo_stroke(context);
    }
}

void paintBicycle(SampleBrush& brush) {
    cairo_t* context = brush.context();
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    static constexpr std::array<Colour, 3> walls = {
        {{0.93, 0.76, 0.52}, {0.62, 0.77, 0.78}, {0.90, 0.66, 0.58}}};
    const Colour wall = walls[static_cast<std::size_t>(brush.randomIndex(3))];
    double ground = h * 0.80;
    brush.rectangle(0, 0, w, ground);
    brush.fillVertical(SampleBrush::mixed(wall, {1, 1, 1}, 0.25), wall, 0, ground);
    for (int row = 0; row < 14; ++row) {
        for (int brick = 0; brick < 9; ++brick) {
            if (brush.randomIndex(3) != 0) continue;
            double brickW = u * 0.11;
            double brickH = u * 0.042;
            brush.rectangle(brush.random(0, w), row * ground / 14, brickW, brickH);
            brush.fill({0.6, 0.35, 0.25, 0.07});
        }
    }
    brush.rectangle(0, ground, w, h - ground);
    brush.fillVertical({0.62, 0.60, 0.58}, {0.42, 0.41, 0.42}, ground, h);
    brush.rectangle(0, ground - u * 0.012, w, u * 0.018);
    brush.fill({0.75, 0.72, 0.68});
    double r = u * 0.19;
    double rearX = w * 0.5 - u * 0.27;
    double frontX = w * 0.5 + u * 0.29;
    double axleY = ground - r + u * 0.02;
    paintShadow(brush, w * 0.5, ground + u * 0.03, u * 0.55, u * 0.04);
    paintWheel(brush, rearX, axleY, r);
    paintWheel(brush, frontX, axleY, r);
    static constexpr std::array<Colour, 3> frames = {
        {{0.12, 0.36, 0.42}, {0.72, 0.20, 0.18}, {0.16, 0.24, 0.46}}};
    brush.setColour(frames[static_cast<std::size_t>(brush.randomIndex(3))]);
    cairo_set_line_width(context, u * 0.020);
    cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    double crankX = rearX + u * 0.20;
    double crankY = axleY + u * 0.02;
    double seatX = rearX + u * 0.12;
    double seatY = axleY - u * 0.27;
    double headX = frontX - u * 0.09;
    double headY = axleY - u * 0.26;
    cairo_move_to(context, rearX, axleY);
    cairo_line_to(context, seatX, seatY);
    cairo_line_to(context, headX, headY);
    cairo_line_to(context, crankX, crankY);
    cairo_line_to(context, rearX, axleY);
    cairo_move_to(context, crankX, crankY);
    cairo_line_to(context, seatX - u * 0.012, seatY - u * 0.05);
    cairo_move_to(context, frontX, axleY);
    cairo_curve_to(context, frontX - u * 0.05, axleY - u * 0.10, headX, headY + u * 0.06, headX - u * 0.015,
                   headY - u * 0.07);
    cairo_stroke(context);
    brush.setColour({0.22, 0.14, 0.10});
    cairo_set_line_width(context, u * 0.026);
    cairo_move_to(context, seatX - u * 0.07, seatY - u * 0.06);
    cairo_line_to(context, seatX + u * 0.05, seatY - u * 0.055);
    cairo_move_to(context, headX - u * 0.015, headY - u * 0.08);
    cairo_curve_to(context, headX + u * 0.03, headY - u * 0.10, headX + u * 0.05, headY - u * 0.08,
                   headX + u * 0.01, headY - u * 0.04);
    cairo_stroke(context);
    brush.ellipse(crankX, crankY, u * 0.035, u * 0.035);
    brush.fill({0.25, 0.25, 0.28});
    // A basket of flowers in front.
    brush.rectangle(headX + u * 0.02, headY - u * 0.07, u * 0.15, u * 0.10);
    brush.fill({0.66, 0.46, 0.26});
    static constexpr std::array<Colour, 4> petals = {
        {{0.94, 0.42, 0.40}, {0.98, 0.82, 0.36}, {0.97, 0.95, 0.93}, {0.80, 0.52, 0.76}}};
    for (int flower = 0; flower < 26; ++flower) {
        double x = headX + u * brush.random(0.02, 0.17);
        double y = headY - u * brush.random(0.07, 0.135);
        brush.ellipse(x, y, u * 0.017, u * 0.016);
        brush.fill(flower % 3 == 0 ? Colour{0.30, 0.52, 0.28}
                                   : petals[static_cast<std::size_t>(brush.randomIndex(4))]);
    }
}

void paintNightCity(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    double water = h * 0.80;
    brush.sky({0.05, 0.07, 0.18}, {0.20, 0.17, 0.38}, {0.80, 0.45, 0.45}, water);
    for (int star = 0; star < 110; ++star) {
        brush.ellipse(brush.random(0, w), brush.random(0, h * 0.45), u * 0.0012 + 0.3, u * 0.0012 + 0.3);
        brush.fill({1, 1, 0.95, brush.random(0.2, 0.9)});
    }
    brush.glow(w * 0.5, water, u * 0.9, {1, 0.66, 0.45, 0.45});
    for (int layer = 0; layer < 3; ++layer) {
        double near = layer / 2.0;
        Colour wall = SampleBrush::mixed({0.34, 0.25, 0.44}, {0.07, 0.07, 0.15}, near);
        for (double x = -u * 0.05; x < w;) {
            double width = u * brush.random(0.06, 0.13);
            double height = h * brush.random(0.16, 0.50 - 0.12 * near);
            double top = water - height;
            brush.rectangle(x, top, width, height);
            brush.fillVertical(SampleBrush::mixed(wall, {1, 0.8, 0.8}, 0.06), wall, top, water);
            double cell = u * (0.012 + 0.006 * near);
            for (double wy = top + cell; wy < water - cell * 1.5; wy += cell * 1.9) {
                for (double wx = x + cell * 0.8; wx < x + width - cell; wx += cell * 1.6) {
                    if (brush.random(0, 1) > 0.36) continue;
                    brush.rectangle(wx, wy, cell * 0.75, cell * 0.95);
                    brush.fill(SampleBrush::mixed({1, 0.84, 0.50, 0.95}, {0.70, 0.85, 1, 0.85},
                                                  brush.random(0, 0.7) > 0.55 ? 1 : 0));
                }
            }
            x += width * brush.random(0.9, 1.5);
        }
    }
    brush.rectangle(0, water, w, h - water);
    brush.fillVertical({0.16, 0.12, 0.26}, {0.04, 0.04, 0.11}, water, h);
    for (int light = 0; light < 260; ++light) {
        double depth = brush.random(0, 1);
        brush.ellipse(brush.random(0, w), water + (h - water) * depth, u * brush.random(0.006, 0.03),
                      std::max(0.7, u * 0.0018));
        brush.fill(brush.randomIndex(3) == 0 ? Colour{0.6, 0.75, 1, 0.28} : Colour{1, 0.78, 0.45, 0.32});
    }
}

void paintStreet(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    double ground = h * 0.82;
    brush.sky({0.55, 0.72, 0.84}, {0.84, 0.87, 0.84}, {0.99, 0.90, 0.74}, ground);
    static constexpr std::array<Colour, 6> walls = {{{0.88, 0.62, 0.44},
                                                     {0.93, 0.82, 0.58},
                                                     {0.62, 0.72, 0.70},
                                                     {0.82, 0.50, 0.46},
                                                     {0.90, 0.88, 0.80},
                                                     {0.60, 0.62, 0.74}}};
    int chosen = brush.randomIndex(6);
    for (double x = -u * 0.04; x < w;) {
        double width = u * brush.random(0.22, 0.34);
        double height = h * brush.random(0.42, 0.66);
        double top = ground - height;
        chosen = (chosen + 1 + brush.randomIndex(4)) % 6;
        const Colour wall = walls[static_cast<std::size_t>(chosen)];
        cairo_t* context = brush.context();
        cairo_move_to(context, x - u * 0.01, top);
        cairo_line_to(context, x + width * 0.5, top - u * brush.random(0.08, 0.16));
        cairo_line_to(context, x + width + u * 0.01, top);
        cairo_close_path(context);
        brush.fill(SampleBrush::mixed({0.58, 0.28, 0.20}, {0.36, 0.34, 0.38}, brush.random(0, 1)));
        brush.rectangle(x, top, width, height);
        brush.fillVertical(SampleBrush::mixed(wall, {1, 1, 1}, 0.15),
                           SampleBrush::mixed(wall, {0.3, 0.2, 0.25}, 0.22), top, ground);
        double windowW = width * 0.17;
        double windowH = windowW * 1.55;
        for (double wy = top + windowH * 0.5; wy < ground - windowH * 2.1; wy += windowH * 1.75) {
            for (int column = 0; column < 3; ++column) {
                paintWindow(brush, x + width * (0.12 + 0.295 * column), wy, windowW, windowH,
                            brush.randomIndex(4) == 0);
            }
        }
        double doorH = windowH * 1.5;
        brush.rectangle(x + width * 0.40, ground - doorH, width * 0.2, doorH);
        brush.fill(SampleBrush::mixed(wall, {0.14, 0.18, 0.24}, 0.75));
        x += width;
    }
    brush.rectangle(0, ground, w, h - ground);
    brush.fillVertical({0.64, 0.60, 0.58}, {0.36, 0.34, 0.37}, ground, h);
    for (int stone = 0; stone < 360; ++stone) {
        double depth = std::sqrt(stone / 360.0);
        brush.ellipse(brush.random(0, w), ground + (h - ground) * depth, u * (0.008 + 0.018 * depth),
                      u * (0.002 + 0.005 * depth));
        brush.fill(brush.randomIndex(2) == 0 ? Colour{1, 0.95, 0.85, 0.10} : Colour{0, 0, 0, 0.10});
    }
    for (int lamp = 0; lamp < 3; ++lamp) {
        double x = w * (0.18 + 0.32 * lamp);
        brush.rectangle(x - u * 0.004, ground - h * 0.24, u * 0.008, h * 0.26);
        brush.fill({0.14, 0.15, 0.18});
        brush.glow(x, ground - h * 0.25, u * 0.10, {1, 0.85, 0.5, 0.8});
        brush.ellipse(x, ground - h * 0.25, u * 0.016, u * 0.020);
        brush.fill({1, 0.95, 0.78});
    }
}

void paintHarbour(SampleBrush& brush) {
    double w = brush.width();
    double h = brush.height();
    double u = brush.unit();
    double water = h * 0.56;
    brush.sky({0.40, 0.62, 0.80}, {0.75, 0.86, 0.90}, {0.98, 0.93, 0.82}, water);
    brush.ridge(h * 0.50, h * 0.05, 0.8, {0.60, 0.70, 0.76}, {0.70, 0.78, 0.80});
    brush.rectangle(0, water, w, h - water);
    brush.fillVertical({0.55, 0.72, 0.76}, {0.12, 0.32, 0.42}, water, h);
    for (int ripple = 0; ripple < 320; ++ripple) {
        double depth = std::pow(brush.random(0, 1), 1.4);
        brush.ellipse(brush.random(0, w), water + (h - water) * depth, u * (0.008 + 0.05 * depth),
                      std::max(0.6, u * 0.002 * (0.3 + depth)));
        brush.fill({1, 1, 1, brush.random(0.04, 0.16)});
    }
    static constexpr std::array<Colour, 4> hulls = {
        {{0.76, 0.26, 0.20}, {0.14, 0.32, 0.48}, {0.94, 0.90, 0.82}, {0.20, 0.44, 0.36}}};
    int colour = brush.randomIndex(4);
    cairo_t* context = brush.context();
    for (int boat = 0; boat < 5; ++boat) {
        double depth = 0.15 + 0.17 * boat;
        double size = u * (0.10 + 0.20 * depth);
        double x = w * (0.12 + 0.76 * std::fmod(boat * 0.41 + 0.13, 1.0));
        double y = water + (h - water) * depth;
        paintShadow(brush, x, y + size * 0.16, size * 1.1, size * 0.16);
        brush.setColour({0.32, 0.22, 0.16});
        cairo_set_line_width(context, size * 0.045);
        cairo_move_to(context, x, y);
        cairo_line_to(context, x, y - size * 1.75);
        cairo_stroke(context);
        cairo_move_to(context, x + size * 0.05, y - size * 1.7);
        cairo_curve_to(context, x + size * 0.5, y - size * 1.1, x + size * 0.78, y - size * 0.5,
                       x + size * 0.85, y - size * 0.16);
        cairo_line_to(context, x + size * 0.05, y - size * 0.16);
        cairo_close_path(context);
        brush.fillVertical({1, 0.99, 0.95}, {0.90, 0.86, 0.78}, y - size * 1.7, y);
        cairo_move_to(context, x - size * 0.05, y - size * 1.45);
        cairo_curve_to(context, x - size * 0.35, y - size * 0.9, x - size * 0.55, y - size * 0.5,
                       x - size * 0.62, y - size * 0.16);
        cairo_line_to(context, x - size * 0.05, y - size * 0.16);
        cairo_close_path(context);
        brush.fill({0.96, 0.94, 0.88});
        cairo_move_to(context, x - size * 0.95, y - size * 0.10);
        cairo_line_to(context, x + size * 1.05, y - size * 0.10);
        cairo_curve_to(context, x + size * 0.9, y + size * 0.22, x + size * 0.6, y + size * 0.24, x,
                       y + size * 0.24);
        cairo_curve_to(context, x - size * 0.6, y + size * 0.24, x - size * 0.8, y + size * 0.16,
                       x - size * 0.95, y - size * 0.10);
        const Colour hull = hulls[static_cast<std::size_t>((colour + boat) % 4)];
        brush.fillVertical(SampleBrush::mixed(hull, {1, 1, 1}, 0.2),
                           SampleBrush::mixed(hull, {0, 0, 0}, 0.25), y - size * 0.1, y + size * 0.24);
    }
}

}  // namespace ostrel
