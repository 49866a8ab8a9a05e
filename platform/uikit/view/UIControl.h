#pragma once

#include "platform/uikit/view/UIView.h"

#include <utility>

namespace ostrel {

enum class UIControlEvent {
    touchDown,
    touchUpInside,
    touchUpOutside,
    touchCancel,
    valueChanged,
    editingChanged,
    editingDidBegin,
    editingDidEnd,
    editingDidEndOnExit
};
enum class UIControlState { normal, highlighted, disabled, selected };

/// A view that reports events to its targets. Return and the space bar press the focused control.
class UIControl : public UIView {
public:
    /// Points by which a finger may leave the control and still press it, because fingers are wide.
    static constexpr CGFloat touchSlop = 24;

    using UIView::UIView;

    bool isEnabled() const { return enabled_; }
    virtual void setEnabled(bool enabled);
    bool isSelected() const { return selected_; }
    virtual void setSelected(bool selected);
    bool isHighlighted() const { return highlighted_; }
    virtual void setHighlighted(bool highlighted);
    /// The first state of disabled, highlighted, selected, normal that applies.
    UIControlState controlState() const;

    /// Runs `action` for each `event`; several actions run in the order in which they were added.
    void addTarget(std::function<void()> action, UIControlEvent event);
    void removeAllTargets() { targets_.clear(); }
    void sendActions(UIControlEvent event);
    bool hasTarget(UIControlEvent event) const;

    bool canBecomeFocused() const override { return enabled_; }
    void touchesBegan(const UITouch& touch) override;
    void touchesMoved(const UITouch& touch) override;
    void touchesEnded(const UITouch& touch) override;
    void touchesCancelled(const UITouch& touch) override;
    bool pressesBegan(const UIPress& press) override;

protected:
    /// Called when the state has changed. The default marks the view for display, because its look may depend
    /// on the state.
    virtual void controlStateDidChange() { setNeedsDisplay(); }

private:
    bool isTouchInside(const UITouch& touch) const;
    bool enabled_ = true;
    bool tracking_ = false;
    bool selected_ = false;
    bool highlighted_ = false;
    std::vector<std::pair<UIControlEvent, std::function<void()>>> targets_;
};

}  // namespace ostrel
