#pragma once

#include "platform/graphics/UIImage.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

/// A button of a navigation bar. Changes show at once. Main thread.
class UIBarButtonItem final {
public:
    enum class SystemItem { done = 0, cancel = 1, edit = 2, add = 4, action = 9 };
    enum class Style { plain, done };

    UIBarButtonItem(SystemItem item, std::function<void()> action);
    UIBarButtonItem(std::string title, Style style, std::function<void()> action);
    UIBarButtonItem(std::shared_ptr<const UIImage> image, std::string accessibilityLabel, std::function<void()> action);

    bool isEnabled() const { return enabled_; }
    void setEnabled(bool enabled);
    const std::string& title() const { return title_; }
    const std::shared_ptr<const UIImage>& image() const { return image_; }
    const std::string& accessibilityLabel() const { return label_; }
    Style style() const { return style_; }
    /// The button that shows this item in a bar; empty while none does. Popovers are anchored there.
    const std::weak_ptr<class UIView>& view() const { return view_; }
    void setView(std::weak_ptr<class UIView> view) { view_ = std::move(view); }
    void press() const;

    /// Set by the bar that shows it.
    std::function<void()> didChange;

private:
    std::string title_, label_;
    std::shared_ptr<const UIImage> image_;
    Style style_ = Style::plain;
    bool enabled_ = true;
    std::function<void()> action_;
    std::weak_ptr<class UIView> view_;
};

/// What a controller puts in the bar of its navigation controller.
class UINavigationItem final {
public:
    const std::string& title() const { return title_; }
    void setTitle(std::string title);
    const std::shared_ptr<UIBarButtonItem>& leftBarButtonItem() const { return left_; }
    void setLeftBarButtonItem(std::shared_ptr<UIBarButtonItem> item);
    const std::shared_ptr<UIBarButtonItem>& rightBarButtonItem() const { return right_; }
    void setRightBarButtonItem(std::shared_ptr<UIBarButtonItem> item);
    /// A view in place of the title, such as a segmented control.
    const std::shared_ptr<class UIView>& titleView() const { return titleView_; }
    void setTitleView(std::shared_ptr<class UIView> view);

    /// Set by the bar that shows it.
    std::function<void()> didChange;

private:
    std::string title_;
    std::shared_ptr<UIBarButtonItem> left_, right_;
    std::shared_ptr<class UIView> titleView_;
};

}  // namespace ostrel
