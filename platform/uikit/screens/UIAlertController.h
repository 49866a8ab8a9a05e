#pragma once

#include "platform/uikit/screens/UIViewController.h"
#include "platform/uikit/text/UITextField.h"

namespace ostrel {

struct UIAlertAction {
    enum class Style { defaultStyle, cancel, destructive };
    std::string title;
    Style style = Style::defaultStyle;
    std::function<void()> handler;  ///< runs after the alert has left
};

/// A short question in the middle of the window (alert) or a choice list at its lower edge, on wide windows in a
/// popover (action sheet). Return presses the preferred action, Escape the cancelling one. Presented over full screen.
class UIAlertController : public UIViewController {
public:
    enum class Style { alert, actionSheet };
    UIAlertController(std::string title, std::string message, Style style);

    const std::string& message() const { return message_; }
    Style style() const { return style_; }
    void addAction(UIAlertAction action);
    const std::vector<UIAlertAction>& actions() const { return actions_; }
    void addTextField(const std::function<void(UITextField&)>& configure);
    const std::vector<std::shared_ptr<UITextField>>& textFields() const { return fields_; }

    void loadView() override;
    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void viewDidLayoutSubviews() override;
    bool cancelOperation() override;
    bool pressesBegan(const UIPress& press) override;

protected:
    PresentationKind presentationKind() const override;

private:
    void choose(std::size_t index);
    bool choosePreferred();
    void build();
    void layout();
    std::string message_;
    Style style_;
    bool chosen_ = false;
    std::vector<UIAlertAction> actions_;
    std::vector<std::shared_ptr<UITextField>> fields_;
    struct Parts;
    std::shared_ptr<Parts> parts_;
};

}  // namespace ostrel
