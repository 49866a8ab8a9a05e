#pragma once

#include "platform/graphics/CGImage.h"
#include "platform/uikit/events/UITransfer.h"

#include <functional>
#include <memory>

class QMimeData;

namespace ostrel {

class UIWindow;

/// The items that are dragged or on the clipboard, without the bytes of a picture.
UITransferItems transferItems(const QMimeData* data);

/// The same items with the bytes of the picture: unchanged when the other program offers PNG or JPEG, else encoded on a
/// thread. `handler` runs once, on the main thread, in a later turn.
void transferItemsWithPicture(const QMimeData* data, std::function<void(UITransferItems)> handler);

/// Opens the system's dialog for existing files, above the window that shows `window`. `handler` runs once, when the
/// dialog closes; without paths when the user cancels. Needs a QApplication.
void chooseFiles(UIWindow* window, const UIFileRequest& request,
                 std::function<void(std::vector<std::string> paths)> handler);
bool canChooseFiles();

/// Decodes the formats that Qt reads beside JPEG and PNG: GIF and WebP. Null for other bytes. Any thread.
std::shared_ptr<const CGImage> decodeWithQt(const Data& data);

}  // namespace ostrel
