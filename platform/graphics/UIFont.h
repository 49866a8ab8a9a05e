#pragma once

#include "platform/graphics/Geometry.h"

#include <string>
#include <string_view>

namespace ostrel {

/// A font named by family and weight, at a size in points. Names: "PingFangSC-Thin", "-Light", "-Regular",
/// "-Medium", "-Semibold", "Courier-Bold". A backend maps these names to the system's fonts; an unknown name
/// means the regular weight.
struct UIFont {
    std::string name = "PingFangSC-Regular";
    CGFloat pointSize = 17;

    static UIFont fontWithName(std::string_view name, CGFloat size) { return {std::string(name), size}; }
    static UIFont system(CGFloat size) { return {"PingFangSC-Regular", size}; }
    static UIFont mediumSystem(CGFloat size) { return {"PingFangSC-Medium", size}; }
    friend bool operator==(const UIFont&, const UIFont&) = default;
};

}  // namespace ostrel
