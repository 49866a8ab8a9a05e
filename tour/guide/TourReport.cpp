#include "tour/guide/TourReport.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>

namespace ostrel {

bool writeTourReport(const std::string& path, const std::string& idiom, const std::vector<TourStep>& steps) {
    auto list = nlohmann::json::array();
    for (const TourStep& step : steps) {
        list.push_back({{"name", step.name},
                        {"ok", step.ok()},
                        {"milliseconds", step.milliseconds},
                        {"picture", step.picture},
                        {"checked", step.held},
                        {"failed", step.failed}});
    }
    const bool ok = !steps.empty() && std::all_of(steps.begin(), steps.end(), [](const TourStep& s) { return s.ok(); });
    std::ofstream file(path);
    file << nlohmann::json{{"idiom", idiom}, {"ok", ok}, {"steps", list}}.dump(2) << "\n";
    return file.good();
}

}  // namespace ostrel
