#include "platform/uikit/UIImagePickerController.h"

#include <algorithm>

namespace ostrel {

void UIImagePickerControllerDelegate::imagePickerControllerDidCancel(UIImagePickerController& picker) {
    picker.dismissViewControllerAnimated(true);
}

UIImagePickerController::UIImagePickerController() : UINavigationController(make<UIViewController>()) {}

UIImagePickerController::~UIImagePickerController() = default;

void UIImagePickerController::initialise() { UINavigationController::initialise(); }

void UIImagePickerController::setMediaTypes(std::vector<std::string> types) {
    std::erase_if(types, [](const std::string& type) { return type != UTTypeImage && type != UTTypeMovie; });
    mediaTypes_ = std::move(types);
}

bool UIImagePickerController::cancelOperation() {
    if (viewControllers().size() > 1) return UINavigationController::cancelOperation();
    if (!presentingViewController()) return false;
    if (const auto delegate = delegate_.lock()) {
        delegate->imagePickerControllerDidCancel(*this);
    } else {
        dismissViewControllerAnimated(true);
    }
    return true;
}

void UIImagePickerController::finishPicking(const UIImagePickerMediaInfo& info) {
    if (const auto delegate = delegate_.lock()) {
        delegate->imagePickerControllerDidFinishPickingMediaWithInfo(*this, info);
    } else {
        dismissViewControllerAnimated(true);
    }
}

}  // namespace ostrel
