#pragma once

#include "tour/TourGuide.h"

#include <memory>

namespace ostrel {

class NSProgress;

/// The tour of the bar that shows work in progress, and of the log. Follows the tour of an article, which leaves the
/// messages open and somebody signed in.
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
