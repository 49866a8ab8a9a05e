#pragma once

#include "articleserver/media/ServerPicture.h"

#include <cairo.h>

#include <cstdint>

namespace ostrel {

enum class SampleScene {
    Ridges,
    Lake,
    SeaDawn,
    Dunes,
    NightCity,
    Street,
    Forest,
    Meadow,
    Bowl,
    Pears,
    Teapot,
    Bicycle,
    Harbour,
};

/// Draws a scene at any size. The seed varies colours and arrangement; equal arguments draw equal pictures.
ServerPicture paintScene(SampleScene scene, int width, int height, std::uint32_t seed);

/// A portrait-like square: head and shoulders before a coloured ground.
ServerPicture paintPortrait(int side, std::uint32_t seed);

/// What the scenes share: a context, the size, and repeatable chance.
class SampleBrush final {
public:
    struct Colour {
        double red;
        double green;
        double blue;
        double alpha = 1;
    };

    SampleBrush(ServerPicture& picture, std::uint32_t seed);
    SampleBrush(const SampleBrush&) = delete;
    SampleBrush& operator=(const SampleBrush&) = delete;
    ~SampleBrush();

    cairo_t* context() const { return context_; }
    double width() const { return width_; }
    double height() const { return height_; }
    /// The shorter side.
    double unit() const { return width_ < height_ ? width_ : height_; }

    double random(double from, double to);
    int randomIndex(int count);
    static Colour mixed(const Colour& from, const Colour& to, double part);

    void setColour(const Colour& colour);
    /// Fills the current path, lightest at `top`, from y to y.
    void fillVertical(const Colour& top, const Colour& bottom, double fromY, double toY);
    void fill(const Colour& colour);
    void rectangle(double x, double y, double width, double height);
    void ellipse(double centreX, double centreY, double radiusX, double radiusY);
    /// A soft round light.
    void glow(double x, double y, double radius, const Colour& colour);
    void sky(const Colour& top, const Colour& middle, const Colour& bottom, double horizon);
    /// A hill line across the picture, filled down to the lower edge.
    void ridge(double baseY, double amplitude, double roughness, const Colour& top, const Colour& bottom);
    /// A soft darkening towards the corners.
    void vignette(double strength);

private:
    cairo_t* context_;
    double width_;
    double height_;
    std::uint32_t state_;
};

void paintRidges(SampleBrush& brush);
void paintLake(SampleBrush& brush);
void paintSeaDawn(SampleBrush& brush);
void paintDunes(SampleBrush& brush);
void paintNightCity(SampleBrush& brush);
void paintStreet(SampleBrush& brush);
void paintForest(SampleBrush& brush);
void paintMeadow(SampleBrush& brush);
void paintBowl(SampleBrush& brush);
void paintPears(SampleBrush& brush);
void paintTeapot(SampleBrush& brush);
void paintBicycle(SampleBrush& brush);
void paintHarbour(SampleBrush& brush);

}  // namespace ostrel
