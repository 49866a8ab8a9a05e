#pragma once

#include "platform/foundation/values/Data.h"
#include "platform/graphics/Geometry.h"

#include <string>
#include <vector>

namespace ostrel {

/// The items of one drag, drop or paste from another program.
struct UITransferItems {
    /// Files on this machine.
    std::vector<std::string> filePaths;
    /// Whether the items contain a picture without a file (a screenshot, a picture of a web page).
    bool hasPicture = false;
    /// The encoded bytes of that picture; null during a drag, and when the other program does not deliver
    /// them.
    Data picture;

    bool isEmpty() const { return filePaths.empty() && !hasPicture; }
};

/// A view, or a view's owner, that accepts drops. The window asks the deepest view under the pointer and its
/// ancestors, and gives the items to the first target that can take them. Main thread.
class UIDropTarget {
public:
    virtual ~UIDropTarget() = default;
    /// Asked while items are dragged over the view; `location` in the window.
    virtual bool canTakeDrop(const UITransferItems& items, CGPoint location) = 0;
    /// The dragged items came over the view, or left it. A drop also ends the hover.
    virtual void dropHoverDidChange(bool /*isInside*/) {}
    virtual void takeDrop(const UITransferItems& items, CGPoint location) = 0;
};

/// The files that the system's dialog offers to choose from.
struct UIFileRequest {
    std::string title;
    std::string kindName;                 ///< "Photos"
    std::vector<std::string> extensions;  ///< lower case, without the dot; empty: every file
};

}  // namespace ostrel
