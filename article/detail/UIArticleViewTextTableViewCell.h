#pragma once

#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

/// The text of an article in full height. The user can select and copy it.
class UIArticleViewTextTableViewCell final : public UITableViewCell {
public:
    UIArticleViewTextTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const std::string& text() const { return text_; }
    /// Shows the text and sets the row's height. The text is measured at the width that the text view has
    /// before the call: for the first text of a row that is the width of the row, 10 points more than the
    /// text view gets.
    void setText(std::string text);
    /// The height of `text` on one line with its margin, points.
    static double heightForText(const std::string& text);
    /// One font for all rows; the first row makes it.
    static const UIFont& textFont();

    const std::shared_ptr<UITextView>& textTextView() const { return textTextView_; }

private:
    std::string text_;
    std::shared_ptr<UITextView> textTextView_;
};

}  // namespace ostrel
