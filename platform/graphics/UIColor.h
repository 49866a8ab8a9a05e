#pragma once

namespace ostrel {

/// A colour in sRGB; components 0 to 1, not premultiplied. The default is clear.
struct UIColor {
    float red = 0, green = 0, blue = 0, alpha = 0;

    static constexpr UIColor rgb(int hex, float alpha = 1) {
        return {float((hex >> 16) & 255) / 255.0f, float((hex >> 8) & 255) / 255.0f, float(hex & 255) / 255.0f, alpha};
    }
    static constexpr UIColor clear() { return {}; }
    static constexpr UIColor white() { return {1, 1, 1, 1}; }
    static constexpr UIColor black() { return {0, 0, 0, 1}; }
    static constexpr UIColor red_() { return {1, 0, 0, 1}; }
    static constexpr UIColor darkGray() { return {1 / 3.0f, 1 / 3.0f, 1 / 3.0f, 1}; }

    // Semantic colours of the light appearance.
    static constexpr UIColor label() { return rgb(0x111318); }
    static constexpr UIColor secondaryLabel() { return rgb(0x6B7280); }
    static constexpr UIColor tertiaryLabel() { return rgb(0xA3A9B5); }
    static constexpr UIColor placeholderText() { return rgb(0xA3A9B5); }
    static constexpr UIColor separator() { return rgb(0x3C3C43, 0.16f); }
    static constexpr UIColor systemBackground() { return white(); }
    static constexpr UIColor groupedBackground() { return rgb(0xF2F3F7); }
    static constexpr UIColor secondaryGroupedBackground() { return white(); }
    static constexpr UIColor fill() { return rgb(0x767680, 0.12f); }
    static constexpr UIColor tint() { return rgb(0x1F6FEB); }
    static constexpr UIColor destructive() { return rgb(0xD92D35); }

    constexpr UIColor withAlpha(float a) const { return {red, green, blue, a}; }
    constexpr bool isClear() const { return alpha <= 0; }
    friend constexpr bool operator==(const UIColor&, const UIColor&) = default;
};

}  // namespace ostrel
