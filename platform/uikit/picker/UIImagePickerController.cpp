#include "platform/uikit/picker/UIImagePickerController.h"

#include "platform/uikit/picker/UIImagePickerGridController.h"
#include "platform/uikit/screens/WorkProgressBar.h"

#include <algorithm>
#include <utility>

namespace ostrel {

void UIImagePickerControllerDelegate::imagePickerControllerDidCancel(UIImagePickerController& picker) {
    picker.dismissViewControllerAnimated(true);
}

UIImagePickerController::UIImagePickerController() : UIImagePickerController(make<UIImagePickerGridController>()) {}

UIImagePickerController::UIImagePickerController(std::shared_ptr<UIImagePickerGridController> grid)
    : UINavigationController(grid), grid_(std::move(grid)) {}

UIImagePickerController::~UIImagePickerController() = default;

void UIImagePickerController::initialise() {
    UINavigationController::initialise();
    // A clip is converted while the picker stays, maybe over whatever shows such work.
    WorkProgressBar::addTo(*this);
}

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

bool UIImagePickerController::pressesBegan(const UIPress& press) {
    // Some keyboards type Control+V as the control character that it is in ASCII.
    const std::string& typed = press.key.characters;
    const bool pastes = (typed == "v" || typed == "V" || typed == "\x16") &&
                        (press.key.modifiers & (modifierControl | modifierCommand));
    if (!pastes) return UINavigationController::pressesBegan(press);
    if (!press.isRepeat) grid_->paste();
    return true;
}

bool UIImagePickerController::canTakeDrop(const UITransferItems& items, CGPoint) { return grid_->takes(items); }

void UIImagePickerController::dropHoverDidChange(bool isInside) { grid_->setDropHover(isInside); }

void UIImagePickerController::takeDrop(const UITransferItems& items, CGPoint) { grid_->take(items); }

}  // namespace ostrel
