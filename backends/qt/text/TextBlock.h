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

/// A text laid out in lines. Measuring and painting both use this class, so that a text is painted as large as it
/// measures. Text beyond the given width, height and number of lines is not laid out. One thread at a time.
class TextBlock final {
public:
    struct Options {
        /// Points.
        double width = std::numeric_limits<double>::infinity();
        double height = std::numeric_limits<double>::infinity();
        /// 0: only the height limits the number of lines.
        int maximumLines = 0;
        NSLineBreakMode lineBreakMode = NSLineBreakMode::byWordWrapping;
        bool onlyWholeLines = false;
        NSTextAlignment alignment = NSTextAlignment::left;
    };

    /// When `maximumLines` is 1, line breaks in the text are shown as blanks.
    TextBlock(std::string_view text, const QFont& font, const Options& options);

    /// The size of all lines, leading included; not rounded.
    QSizeF size() const { return {width_, height_}; }
    int lineCount() const { return lineCount_; }
    bool isTruncated() const { return truncated_; }
    /// The rectangles that the characters from `begin` to `end` (UTF-16 units of the laid out text) cover, line by
    /// line, in points from the upper left corner of the box. Lines above `top` and below `bottom` are left out. When
    /// the selection continues in the next line, the rectangle reaches to the edge of the box.
    std::vector<QRectF> coverOf(int begin, int end, double top, double bottom) const;
    /// The place between two characters that is nearest to a point of the box, in UTF-16 units.
    int placeAt(QPointF point) const;
    /// Converts a length of `text` from UTF-8 bytes to UTF-16 units, and back.
    static int unitsOf(std::string_view text, std::size_t bytes);
    static std::size_t bytesOf(std::string_view text, int units);
    /// Draws with the painter's pen; `origin` is the upper left corner of the box. Lines outside `visible` (in the
    /// painter's coordinates) are left out.
    void draw(QPainter& painter, QPointF origin, const QRectF& visible);

    /// The height of one line of this font, leading included.
    static double lineHeight(const QFont& font);

private:
    void layOut(const Options& options, double fontLineHeight);
    /// Replaces the line that begins at `start` by the part of the line that fits before an ellipsis.
    void elide(int start, double y, const Options& options);
    double alignedX(const QTextLine& line, const Options& options) const;
    struct ShownLine {
        QTextLine line;
        /// The shown range of the text, without an ellipsis.
        int start, end;
        /// The place in the text at which the line's own layout begins.
        int offset;
    };
    ShownLine shownLine(int index) const;
    /// The rectangle of a line in the block.
    QRectF lineBox(int index) const;

    QTextLayout layout_;
    // The line with the ellipsis; empty when nothing is cut.
    QTextLayout lastLine_;
    // The place in the text at which the cut line begins, and how much of the line is shown.
    int cutStart_ = 0, cutLength_ = 0;
    double boxWidth_ = 0, leastLineHeight_ = 0;
    bool rightToLeft_ = false;
    bool truncated_ = false;
    double width_ = 0, height_ = 0;
    int lineCount_ = 0;
};

}  // namespace ostrel
