#include "platform/uikit/screens/UIBarButtonItem.h"

#include "platform/foundation/resources/PlatformText.h"
#include "platform/uikit/view/UIView.h"

namespace ostrel {

UIBarButtonItem::UIBarButtonItem(SystemItem item, std::function<void()> action) : action_(std::move(action)) {
    switch (item) {
    case SystemItem::done:
        title_ = label_ = platformText("Done");
        style_ = Style::done;
        break;
    case SystemItem::cancel: title_ = label_ = platformText("Cancel"); break;
    case SystemItem::edit: title_ = label_ = platformText("Edit"); break;
    case SystemItem::add:
        label_ = platformText("Add");
        image_ = UIImage::systemImageNamed("plus");
        break;
    case SystemItem::action:
        label_ = platformText("Share");
        image_ = UIImage::systemImageNamed("square.and.arrow.up");
        break;
    }
}

UIBarButtonItem::UIBarButtonItem(std::string title, Style style, std::function<void()> action)
    : title_(std::move(title)), label_(title_), style_(style), action_(std::move(action)) {}

UIBarButtonItem::UIBarButtonItem(std::shared_ptr<const UIImage> image, std::string accessibilityLabel,
                                 std::function<void()> action)
    : label_(std::move(accessibilityLabel)), image_(std::move(image)), action_(std::move(action)) {}

void UIBarButtonItem::setEnabled(bool enabled) {
    if (enabled_ == enabled) return;
    enabled_ = enabled;
    if (didChange) didChange();
}

void UIBarButtonItem::press() const {
    // A copy: the action may replace this item.
    const auto action = action_;
    if (enabled_ && action) action();
}

void UINavigationItem::setTitle(std::string title) {
    if (title_ == title) return;
    title_ = std::move(title);
    if (didChange) didChange();
}

void UINavigationItem::setLeftBarButtonItem(std::shared_ptr<UIBarButtonItem> item) {
    if (left_ == item) return;
    if (left_) left_->didChange = nullptr;
    left_ = std::move(item);
    if (didChange) didChange();
}

void UINavigationItem::setRightBarButtonItem(std::shared_ptr<UIBarButtonItem> item) {
    if (right_ == item) return;
    if (right_) right_->didChange = nullptr;
    right_ = std::move(item);
    if (didChange) didChange();
}

void UINavigationItem::setTitleView(std::shared_ptr<UIView> view) {
    if (titleView_ == view) return;
    titleView_ = std::move(view);
    if (didChange) didChange();
}

}  // namespace ostrel
