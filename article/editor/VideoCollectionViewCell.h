#pragma once

#include <string>

namespace ostrel {

/// The tile of a video.
class VideoCollectionViewCell {
public:
    /// A playing time in seconds as a clock-like text: "0:42", "2:05", "1:10:00". The part before the last colon is
    /// rounded, not truncated (90 seconds read "2:30"); so is required, readers of such texts know them so. The minutes
    /// after an hour are not padded. Negative seconds keep their sign ("0:0-5"); seconds that are not finite or reach
    /// 2^63 read "0:00".
    static std::string durationString(float seconds);
};

}  // namespace ostrel
