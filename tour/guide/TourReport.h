#pragma once

#include <string>
#include <vector>

namespace ostrel {

/// One step of the tour: how long it took, and which of its checks held and failed.
struct TourStep {
    std::string name;
    std::string picture;
    double milliseconds = 0;
    std::vector<std::string> held;
    std::vector<std::string> failed;
    bool ok() const { return failed.empty() && !held.empty(); }
};

/// Writes the steps as JSON: an object with "idiom", "ok" and "steps" (name, ok, milliseconds, picture, checked,
/// failed). False when the file cannot be written.
bool writeTourReport(const std::string& path, const std::string& idiom, const std::vector<TourStep>& steps);

}  // namespace ostrel
