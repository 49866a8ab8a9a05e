#pragma once

#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UILabel.h"
#include "reader/services/ReaderLog.h"

#include <memory>
#include <string>

namespace ostrel {

/// A row of the log: the time and the text of one line, which users can select and copy. Shows an embedder a cell that
/// measures its own height. Main thread.
class ReaderLogCell final : public UITableViewCell {
public:
    /// The side margins, and the height of a row with one line of text, in points.
    static constexpr CGFloat margin = 16, leastHeight = 26;

    using UITableViewCell::UITableViewCell;
    void initialise();
    void show(const ReaderLog::Line& line);

    CGFloat automaticHeight() const override;
    void layoutSubviews() override;

private:
    std::shared_ptr<UILabel> time_, text_;
};

}  // namespace ostrel
