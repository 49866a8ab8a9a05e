#include "platform/uikit/view/Autoresizing.h"

#include "platform/uikit/view/UIView.h"

namespace ostrel {

namespace {

struct Span {
    CGFloat origin, length;
};

Span autoresizedSpan(Span span, bool nearFlexible, bool lengthFlexible, bool farFlexible, CGFloat oldTotal,
                     CGFloat newTotal) {
    const CGFloat difference = newTotal - oldTotal;
    const int flexibleParts = int(nearFlexible) + int(lengthFlexible) + int(farFlexible);
    if (flexibleParts == 0 || difference == 0) return span;
    const CGFloat nearPart = nearFlexible ? std::max(0.0, span.origin) : 0;
    const CGFloat lengthPart = lengthFlexible ? std::max(0.0, span.length) : 0;
    const CGFloat farPart = farFlexible ? std::max(0.0, oldTotal - span.origin - span.length) : 0;
    const CGFloat sum = nearPart + lengthPart + farPart;
    const auto share = [&](bool flexible, CGFloat part) {
        if (!flexible) return 0.0;
        // A single flexible part takes the whole difference, whatever its length, even when that is below 0.
        if (flexibleParts == 1 || sum <= 0) return difference / flexibleParts;
        return difference * part / sum;
    };
    return {span.origin + share(nearFlexible, nearPart),
            std::max(0.0, span.length + share(lengthFlexible, lengthPart))};
}

}  // namespace

CGRect autoresizedFrame(const CGRect& frame, unsigned mask, CGSize oldSize, CGSize newSize) {
    const Span horizontal =
        autoresizedSpan({frame.origin.x, frame.size.width}, mask & flexibleLeftMargin, mask & flexibleWidth,
                        mask & flexibleRightMargin, oldSize.width, newSize.width);
    const Span vertical =
        autoresizedSpan({frame.origin.y, frame.size.height}, mask & flexibleTopMargin, mask & flexibleHeight,
                        mask & flexibleBottomMargin, oldSize.height, newSize.height);
    return {horizontal.origin, vertical.origin, horizontal.length, vertical.length};
}

}  // namespace ostrel
