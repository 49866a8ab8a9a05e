#pragma once

#include "platform/graphics/TextMeasurer.h"
#include "platform/graphics/UIColor.h"

#include <limits>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QTextLayout>
#include <string_view>
#include <vector>

class QPainter;

namespace ostrel {

/// A text laid out in lines. Measuring and painting both go through here, so that what is measured is what is painted.
/// Text beyond what the limits can show is not looked at. One thread at a time.
class TextBlock final {
public:
    struct Options {
        double width = std::numeric_limits<double>::infinity();   ///< points
        double height = std::numeric_limits<double>::infinity();  ///< points
        int maximumLines = 0;                                     ///< 0: no limit but the height
        NSLineBreakMode lineBreakMode = NSLineBreakMode::byWordWrapping;
        bool onlyWholeLines = false;
        NSTextAlignment alignment = NSTextAlignment::left;
    };

    /// With one line, breaks in the text are shown as blanks.
    TextBlock(std::string_view text, const QFont& font, const Options& options);

    /// Of all lines, leading included; not rounded.
    QSizeF size() const { return {width_, height_}; }
    int lineCount() const { return lineCount_; }
    bool isTruncated() const { return truncated_; }
    /// What the characters from `begin` to `end` (UTF-16 units of the laid out text) cover, from the upper left corner of
    /// the box that was given the width, line by line; lines beyond `top` and `bottom` are left out. A line that goes on
    /// in the next is covered up to the edge of the box.
    std::vector<QRectF> coverOf(int begin, int end, double top, double bottom) const;
    /// The place between characters that is nearest to a point of that box, in UTF-16 units.
    int placeAt(QPointF point) const;
    /// How many units the text's first `bytes` bytes take when laid out, and the way back.
    static int unitsOf(std::string_view text, std::size_t bytes);
    static std::size_t bytesOf(std::string_view text, int units);
    /// Draws with the painter's pen; `origin` is the upper left corner of the box that was given the width. Lines
    /// outside `visible` (in the painter's coordinates) are left out.
    void draw(QPainter& painter, QPointF origin, const QRectF& visible);

    /// The height of one line of this font, leading included.
    static double lineHeight(const QFont& font);

private:
    void layOut(const Options& options, double fontLineHeight);
    /// Replaces the line that begins at `start` by as much of it as fits before an ellipsis.
    void elide(int start, double y, const Options& options);
    double alignedX(const QTextLine& line, const Options& options) const;
    struct ShownLine {
        QTextLine line;
        int start, end;  ///< of the text, without an ellipsis
        int offset;      ///< where the line's own layout begins
    };
    ShownLine shownLine(int index) const;
    /// What a line takes of the block.
    QRectF lineBox(int index) const;

    QTextLayout layout_;
    QTextLayout lastLine_;              // the cut line; empty when nothing is cut
    int cutStart_ = 0, cutLength_ = 0;  // of the text: where the cut line begins, how much of it is shown
    double boxWidth_ = 0, leastLineHeight_ = 0;
    bool rightToLeft_ = false;
    bool truncated_ = false;
    double width_ = 0, height_ = 0;
    int lineCount_ = 0;
};

}  // namespace ostrel
