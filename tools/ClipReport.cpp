#include "tools/ClipReport.h"

#include "article/media/NSMov2Mp4.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>

namespace ostrel {

namespace {

std::string isoDate(NSDate date) {
    const auto seconds = static_cast<std::time_t>(std::floor(date.secondsSince1970));
    std::tm parts{};
    std::array<char, 64> text{};
    ::gmtime_r(&seconds, &parts);
    std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text.data();
}

const char* nameOf(UIImageOrientation orientation) {
    switch (orientation) {
    case UIImageOrientation::up: return "up";
    case UIImageOrientation::down: return "down";
    case UIImageOrientation::left: return "left";
    case UIImageOrientation::right: return "right";
    }
    return "up";
}

UIImageOrientation orientationOf(const std::shared_ptr<const AVAsset>& clip) {
    const AVAssetTrack* track = clip ? clip->firstTrack(AVMediaType::video) : nullptr;
    return track ? NSMov2Mp4::orientationOfTransform(track->preferredTransform) : UIImageOrientation::up;
}

template <class Json>
std::string textOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

nlohmann::ordered_json textOrNull(const std::optional<std::string>& text) {
    return text ? nlohmann::ordered_json(*text) : nlohmann::ordered_json();
}

}  // namespace

void ClipReport::print(const NSArticleVideoObject& item, bool json) const {
    nlohmann::ordered_json facts;
    facts["duration"] = duration;
    facts["width"] = width;
    facts["height"] = height;
    facts["orientation"] = nameOf(orientationOf(result));
    facts["turned"] = nameOf(orientationOf(source));
    facts["date"] = item.date() ? nlohmann::ordered_json(isoDate(*item.date())) : nlohmann::ordered_json();
    facts["latitude"] = textOrNull(item.latitude());
    facts["longitude"] = textOrNull(item.longitude());
    facts["altitude"] = textOrNull(item.altitude());
    facts["model"] = textOrNull(item.device());
    facts["software"] = textOrNull(item.software());
    facts["preset"] = preset;
    if (json) {
        std::cout << textOf(facts) << "\n";
        return;
    }
    for (const auto& [name, value] : facts.items()) {
        const std::string text = value.is_null() ? "-" : value.is_string() ? value.get<std::string>() : value.dump();
        std::printf("%-12s %s\n", name.c_str(), text.c_str());
    }
}

void ClipReport::printError(const std::string& why, bool json) {
    if (json) std::cout << textOf(nlohmann::json{{"error", why}}) << "\n";
    std::cerr << "ostrel-convert: " << why << "\n";
}

}  // namespace ostrel
