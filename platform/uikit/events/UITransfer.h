#pragma once

#include "platform/foundation/values/Data.h"
#include "platform/graphics/Geometry.h"

#include <string>
#include <vector>

namespace ostrel {

/// What is dragged, dropped or pasted from other programs.
struct UITransferItems {
    /// Files of this machine.
    std::vector<std::string> filePaths;
    /// Whether there is a picture that is no file (a part of a screen, a picture of a web page).
    bool hasPicture = false;
    /// That picture, encoded; null while it is only dragged, and when it cannot be had.
    Data picture;

    bool isEmpty() const { return filePaths.empty() && !hasPicture; }
};

/// A view or a controller that takes what is dropped on its view. The one nearest to the pointer that can take the items
/// gets them. Main thread.
class UIDropTarget {
public:
    virtual ~UIDropTarget() = default;
    /// Asked while items are dragged over it; `location` in the window.
    virtual bool canTakeDrop(const UITransferItems& items, CGPoint location) = 0;
    /// They came over it, or left it (also when they are dropped).
    virtual void dropHoverDidChange(bool /*isInside*/) {}
    virtual void takeDrop(const UITransferItems& items, CGPoint location) = 0;
};

/// What the system's dialog for choosing files is to offer.
struct UIFileRequest {
    std::string title;
    std::string kindName;                 ///< "Photos"
    std::vector<std::string> extensions;  ///< lower case, without the dot; empty: every file
};

}  // namespace ostrel
