#pragma once

#include "platform/graphics/TextMeasurer.h"
#include "platform/graphics/UIColor.h"

#include <limits>
#include <QFont>
#include <QPointF>
#include <QRectF>
#include <QTextLayout>
#include <string_view>

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

    QTextLayout layout_;
    QTextLayout lastLine_;  // the cut line; empty when nothing is cut
    bool rightToLeft_ = false;
    bool truncated_ = false;
    double width_ = 0, height_ = 0;
    int lineCount_ = 0;
};

}  // namespace ostrel
