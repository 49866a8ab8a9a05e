#pragma once

#include "platform/foundation/values/NSURL.h"
#include "platform/graphics/UIImage.h"
#include "platform/uikit/events/UITransfer.h"
#include "platform/uikit/screens/UINavigationController.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

class UIImagePickerController;
class UIImagePickerGridController;

/// Media types (uniform type identifiers) that a picker offers.
inline constexpr std::string_view UTTypeImage = "public.image";
inline constexpr std::string_view UTTypeMovie = "public.movie";

enum class UIImagePickerControllerSourceType { photoLibrary = 0 };

/// What the user picked.
struct UIImagePickerMediaInfo {
    std::string mediaType;  ///< one of the picker's media types
    /// Of a picture, never null then: its encoded bytes as they were when it was picked, decoded at the size it is
    /// shown.
    std::shared_ptr<const UIImage> originalImage;
    /// Of a clip: the address of its file. Of a picture that came from a file: that file's; absent for a pasted one.
    std::optional<NSURL> mediaURL;
};

/// Told on the main thread. The picker stays on screen until somebody dismisses it, so more than one medium may be
/// picked.
class UIImagePickerControllerDelegate {
public:
    virtual ~UIImagePickerControllerDelegate() = default;
    virtual void imagePickerControllerDidFinishPickingMediaWithInfo(UIImagePickerController&,
                                                                    const UIImagePickerMediaInfo&) {}
    /// The default dismisses the picker.
    virtual void imagePickerControllerDidCancel(UIImagePickerController& picker);
};

/// Lets the user choose a picture or a clip: a grid of those in the folders of the installed `MediaLibrary`, newest
/// first, any other file by the system's file dialog, files dropped on it, a picture pasted into it. Presented full
/// screen or as a form sheet; what is asked of the disk is asked off the main thread. Main thread.
class UIImagePickerController final : public UINavigationController, public UIDropTarget {
public:
    UIImagePickerController();
    ~UIImagePickerController() override;
    void initialise();

    UIImagePickerControllerSourceType sourceType() const { return sourceType_; }
    void setSourceType(UIImagePickerControllerSourceType type) { sourceType_ = type; }
    /// Pictures only, by default. Set before the picker is shown; types of other names are left out.
    const std::vector<std::string>& mediaTypes() const { return mediaTypes_; }
    void setMediaTypes(std::vector<std::string> types);
    /// Kept for the host's use: media are handed out as they are.
    bool allowsEditing() const { return allowsEditing_; }
    void setAllowsEditing(bool allows) { allowsEditing_ = allows; }
    std::shared_ptr<UIImagePickerControllerDelegate> delegate() const { return delegate_.lock(); }
    void setDelegate(std::weak_ptr<UIImagePickerControllerDelegate> delegate) { delegate_ = std::move(delegate); }

    /// Escape or "Cancel": tells the delegate; without one the picker is dismissed.
    bool cancelOperation() override;
    /// Control+V and Command+V choose what is on the clipboard.
    bool pressesBegan(const UIPress& press) override;
    bool canTakeDrop(const UITransferItems& items, CGPoint location) override;
    void dropHoverDidChange(bool isInside) override;
    void takeDrop(const UITransferItems& items, CGPoint location) override;

private:
    friend class UIImagePickerGridController;
    explicit UIImagePickerController(std::shared_ptr<UIImagePickerGridController> grid);
    void finishPicking(const UIImagePickerMediaInfo& info);

    const std::shared_ptr<UIImagePickerGridController> grid_;
    UIImagePickerControllerSourceType sourceType_ = UIImagePickerControllerSourceType::photoLibrary;
    std::vector<std::string> mediaTypes_{std::string(UTTypeImage)};
    bool allowsEditing_ = false;
    std::weak_ptr<UIImagePickerControllerDelegate> delegate_;
};

}  // namespace ostrel
