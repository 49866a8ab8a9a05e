#pragma once

#include "platform/uikit/table/UITableViewCell.h"
#include "platform/uikit/text/UITextView.h"

#include <memory>
#include <string>

namespace ostrel {

/// The text of an article, as high as it is long. It can be selected and copied.
class UIArticleViewTextTableViewCell final : public UITableViewCell {
public:
    UIArticleViewTextTableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const std::string& text() const { return text_; }
    /// Shows the text and takes its height from it. The text is measured at the width that the text view has so far,
    /// which for the first text of a row is the row's own and 10 points more than it gets.
    void setText(std::string text);
    /// Points that one line of `text` needs.
    static double heightForText(const std::string& text);
    /// Shared by all rows; made with the first of them.
    static const UIFont& textFont();

    const std::shared_ptr<UITextView>& textTextView() const { return textTextView_; }

private:
    std::string text_;
    std::shared_ptr<UITextView> textTextView_;
};

}  // namespace ostrel
