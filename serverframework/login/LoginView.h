#pragma once

#include "platform/uikit/controls/UIActivityIndicatorView.h"
#include "platform/uikit/controls/UIButton.h"
#include "platform/uikit/controls/UISegmentedControl.h"
#include "platform/uikit/text/UILabel.h"
#include "platform/uikit/text/UITextField.h"
#include "platform/uikit/view/UIScrollView.h"

#include <memory>
#include <string>

namespace ostrel {

/// The view of the login screen. It knows looks and geometry only; the controller sets its texts and state. Main
/// thread.
class LoginView final : public UIView {
public:
    enum class Mode { signIn, createAccount };

    LoginView() = default;
    void initialise();

    /// Changes the labels and keeps the typed texts.
    void setMode(Mode mode);
    Mode mode() const { return mode_; }
    /// While it is busy, the button shows a spinner and cannot be pressed.
    void setBusy(bool busy);
    bool isBusy() const { return spinner_->isAnimating(); }
    /// Shows `sentence`; an empty one hides the error.
    void setError(const std::string& sentence);

    const std::shared_ptr<UISegmentedControl>& modeControl() const { return modeControl_; }
    const std::shared_ptr<UITextField>& nameField() const { return nameField_; }
    const std::shared_ptr<UITextField>& passwordField() const { return passwordField_; }
    const std::shared_ptr<UIButton>& button() const { return button_; }
    const std::shared_ptr<UILabel>& errorLabel() const { return errorLabel_; }

    void layoutSubviews() override;

private:
    std::shared_ptr<UILabel> addLabel(const std::shared_ptr<UIView>& to, const UIFont& font, UIColor color);
    std::shared_ptr<UITextField> addField(std::string placeholder);

    Mode mode_ = Mode::signIn;
    std::shared_ptr<UIScrollView> scroll_;
    std::shared_ptr<UIView> card_, separator_;
    std::shared_ptr<UILabel> heading_, subtitle_, nameTitle_, passwordTitle_, hint_, errorLabel_;
    std::shared_ptr<UISegmentedControl> modeControl_;
    std::shared_ptr<UITextField> nameField_, passwordField_;
    std::shared_ptr<UIButton> button_;
    std::shared_ptr<UIActivityIndicatorView> spinner_;
};

}  // namespace ostrel
