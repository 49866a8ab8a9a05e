#pragma once

#include "platform/graphics/CGImage.h"
#include "platform/uikit/events/UITransfer.h"

#include <functional>
#include <memory>

class QMimeData;

namespace ostrel {

class UIWindow;

/// What is dragged or on the clipboard, without its picture's bytes.
UITransferItems transferItems(const QMimeData* data);

/// The same with the bytes of the picture: as they are where the other program gives them as PNG or JPEG, else encoded on
/// a thread. `handler` runs once, on the main thread, in a later turn.
void transferItemsWithPicture(const QMimeData* data, std::function<void(UITransferItems)> handler);

/// The system's dialog for one existing file, over the window that shows `window`. `handler` runs once, when it closes,
/// with nothing when it was cancelled. Needs a QApplication.
void chooseFiles(UIWindow* window, const UIFileRequest& request,
                 std::function<void(std::vector<std::string> paths)> handler);
bool canChooseFiles();

/// GIF, WebP: what Qt reads beside JPEG and PNG. Any thread.
std::shared_ptr<const CGImage> decodeWithQt(const Data& data);

}  // namespace ostrel
