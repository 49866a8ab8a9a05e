#pragma once

#include "platform/uikit/mounting/Mounting.h"

#include <cstdint>
#include <QImage>
#include <unordered_map>

namespace ostrel {

/// Pictures of spinners: eight spokes, the leading one darkest. The phases of a turn are side by side in one picture,
/// so that turning only moves the shown part. Keeps pictures of 64 different spinners. Main thread.
class SpinnerPictures final {
public:
    /// Phases of a turn, which takes a second.
    static constexpr int phaseCount = 24;

    /// `side` in device pixels. Equal keys have equal pictures.
    static std::uint64_t keyFor(const SpinnerContent& spinner, int side);
    /// `phaseCount` squares side by side for a turning spinner, else one square with the share of the spokes that the
    /// user has pulled out so far.
    const QImage& picture(const SpinnerContent& spinner, int side);

private:
    std::unordered_map<std::uint64_t, QImage> pictures_;
};

}  // namespace ostrel
