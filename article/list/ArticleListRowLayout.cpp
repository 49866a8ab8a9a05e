#include "article/list/ArticleListRowLayout.h"

#include <algorithm>

namespace ostrel {

namespace {

constexpr CGRect faceFrame{20, 12, 56, 56};
constexpr CGFloat nameX = 84, nameHeight = 18, nameMargin = 10;
constexpr CGFloat timeGap = 5, timeHeight = 18;
constexpr CGSize buttonSize{50, 30};

}  // namespace

CGFloat ArticleListRowLayout::textWidth(CGFloat rowWidth, CGFloat accessoryRoom) {
    return std::max(0.0, rowWidth - faceFrame.maxX() - accessoryRoom);
}

CGFloat ArticleListRowLayout::shownTextHeight(CGFloat measured) {
    return std::clamp(measured * 1.04, smallestTextHeight, largestTextHeight);
}

int ArticleListRowLayout::measuredLines(CGFloat lineHeight) {
    return static_cast<int>(largestTextHeight / std::max(1.0, lineHeight)) + 1;
}

ArticleListRowLayout ArticleListRowLayout::make(CGSize row, const Content& content) {
    ArticleListRowLayout layout;
    layout.face = faceFrame;
    layout.name = {nameX, faceFrame.minY(), std::max(0.0, row.width - nameX - nameMargin), nameHeight};
    const CGFloat timeX = nameX + content.nameWidth + timeGap;
    layout.time = {timeX, layout.name.minY(), std::max(0.0, row.width - timeX), timeHeight};

    // The text view begins 8 points left of the name; its inset moves the text back under the name.
    const CGFloat left = faceFrame.maxX();
    layout.text = {left, textTop, textWidth(row.width, content.accessoryRoom), content.textHeight};

    const CGFloat y = row.height - roomBelowText;
    layout.like = {{left, y}, buttonSize};
    layout.comment = {{left + (row.width - left) * 0.28, y}, buttonSize};
    layout.share = {{left + (row.width - left) * 0.56, y}, buttonSize};
    return layout;
}

}  // namespace ostrel
