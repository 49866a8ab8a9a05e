#pragma once

#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/controls/UIImageView.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/view/UIView.h"

#include <string>

namespace ostrel {

enum class UITableViewCellStyle { defaultStyle, subtitle };
enum class UITableViewCellAccessoryType { none, disclosureIndicator, detailDisclosureButton };
enum class UITableViewCellSelectionStyle { none, gray };

/// One row of a table: a surface that moves and is painted as a whole. Made while a table asks for a row, it begins
/// with that table's row width (else 320) and a height of 44 points.
class UITableViewCell : public UIView {
public:
    UITableViewCell(UITableViewCellStyle style, std::string reuseIdentifier);
    void initialise();

    const std::string& reuseIdentifier() const { return reuseIdentifier_; }
    /// The built-in labels, made on first need; placed by the base class over the whole row.
    const std::shared_ptr<UILabel>& textLabel();
    const std::shared_ptr<UILabel>& builtInDetailLabel();
    UITableViewCellAccessoryType accessoryType() const { return accessoryType_; }
    void setAccessoryType(UITableViewCellAccessoryType type);
    UITableViewCellSelectionStyle selectionStyle() const { return selectionStyle_; }
    void setSelectionStyle(UITableViewCellSelectionStyle style) { selectionStyle_ = style; }
    bool isSelected() const { return selected_; }
    virtual void setSelected(bool selected, bool animated);
    virtual void setHighlighted(bool highlighted, bool animated);
    /// Called before the row is handed out again.
    virtual void prepareForReuse() {}
    /// The height that the row asks for: its constraint, else its labels', at least 44.
    virtual CGFloat automaticHeight() const;

    /// The accessory button was pressed; set by the table.
    std::function<void()> accessoryTapped;
    /// The automatic height may have changed; set by the table.
    std::function<void()> heightDidChange;
    const std::shared_ptr<UIButton>& accessoryButton() const { return accessoryButton_; }

    void layoutSubviews() override;
    bool canBecomeFocused() const override { return isInTable_; }

protected:
    void subviewSizeDidChange(UIView& subview) override;

private:
    friend class UITableView;
    struct Place {  // where a row lies in its section's card
        CGFloat cornerRadius = 0;
        bool roundsTop = false, roundsBottom = false;
        bool hasSeparator = false;
        friend bool operator==(const Place&, const Place&) = default;
    };
    /// The width that new rows begin with: a table's while it asks for a row.
    static CGFloat currentRowWidth;
    void setPlace(const Place& place);
    void updateSelectionLook(bool animated);
    CGFloat accessoryWidth() const;

    std::string reuseIdentifier_;
    UITableViewCellStyle style_;
    UITableViewCellAccessoryType accessoryType_ = UITableViewCellAccessoryType::none;
    UITableViewCellSelectionStyle selectionStyle_ = UITableViewCellSelectionStyle::gray;
    bool selected_ = false, highlighted_ = false, isInTable_ = false;
    Place place_;
    std::shared_ptr<UILabel> textLabel_, detailLabel_;
    std::shared_ptr<UIView> selectedBackground_, separator_;
    std::shared_ptr<UIImageView> accessoryImage_;
    std::shared_ptr<UIButton> accessoryButton_;
};

}  // namespace ostrel
