#include "serverframework/login/LoginLayout.h"

#include <algorithm>
#include <cmath>

namespace ostrel {

CGFloat LoginLayout::columnWidth(CGSize bounds) { return std::clamp(bounds.width - 2 * margin, 0.0, maximumWidth); }

LoginLayout LoginLayout::make(CGSize bounds, const Texts& texts) {
    constexpr CGFloat modeHeight = 34;
    constexpr CGFloat inset = 16;
    constexpr CGFloat hairline = 1;
    const CGFloat width = columnWidth(bounds);
    const CGFloat x = std::floor((bounds.width - width) / 2);

    LoginLayout layout;
    CGFloat y = 0;
    const auto place = [&](CGFloat space, CGFloat height) {
        const CGRect frame(x, y + space, width, height);
        y = frame.maxY();
        return frame;
    };
    layout.heading = place(0, texts.heading);
    layout.subtitle = place(4, texts.subtitle);
    layout.mode = place(24, modeHeight);
    layout.card = place(20, 2 * rowHeight + hairline);
    layout.hint = place(texts.hint ? 8 : 0, texts.hint.value_or(0));
    layout.error = place(texts.error ? 12 : 0, texts.error.value_or(0));
    layout.button = place(20, buttonHeight);

    const CGFloat top = std::clamp(std::floor((bounds.height - y) / 3), 24.0, 140.0);
    for (CGRect* frame :
         {&layout.heading, &layout.subtitle, &layout.mode, &layout.card, &layout.hint, &layout.error, &layout.button}) {
        frame->origin.y += top;
    }
    layout.contentHeight = layout.button.maxY() + 24;

    const CGFloat titleWidth = std::min(std::ceil(texts.rowTitleWidth), std::max(0.0, width / 2 - inset));
    const CGFloat fieldX = std::min(inset + titleWidth + inset, width);
    const CGFloat fieldWidth = std::max(0.0, width - fieldX - inset / 2);
    layout.nameTitle = {std::min(inset, width), 0, titleWidth, rowHeight};
    layout.nameField = {fieldX, 0, fieldWidth, rowHeight};
    layout.separator = {std::min(inset, width), rowHeight, std::max(0.0, width - inset), hairline};
    layout.passwordTitle = layout.nameTitle.offsetBy(0, rowHeight + hairline);
    layout.passwordField = layout.nameField.offsetBy(0, rowHeight + hairline);
    return layout;
}

}  // namespace ostrel
