#pragma once

#include "platform/uikit/mounting/Mounting.h"

#include <cstdint>
#include <QImage>
#include <unordered_map>

namespace ostrel {

/// Pictures of the turning wheel: eight spokes, the leading one darkest. The phases of a turn lie side by side in one
/// picture, so that turning only moves the part that is shown. The last 64 wheels are kept. Main thread.
class SpinnerPictures final {
public:
    static constexpr int phaseCount = 24;  ///< a turn takes a second

    /// `side` in device pixels. Equal keys have equal pictures.
    static std::uint64_t keyFor(const SpinnerContent& spinner, int side);
    /// `phaseCount` squares side by side while it turns, else one square with the part of the wheel pulled so far.
    const QImage& picture(const SpinnerContent& spinner, int side);

private:
    std::unordered_map<std::uint64_t, QImage> pictures_;
};

}  // namespace ostrel
