#pragma once

#include "tour/guide/TourGuide.h"

#include <memory>

namespace ostrel {

class NSProgress;

/// The tour of the bar that shows work in progress, and of the log. Follows the tour of an article, which leaves a user
/// signed in and the messages open.
class LogTour final : public TourGuide {
public:
    using TourGuide::TourGuide;
    void run();

private:
    void workShowsItself();
    void workIsListed();
    void workEnds();
    void logShowsLines();
    void logCloses();

    std::shared_ptr<NSProgress> first_, second_;
    int cancelled_ = 0;
};

}  // namespace ostrel
