#pragma once

#include "platform/graphics/Geometry.h"
#include "platform/uikit/events/UITransfer.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace ostrel {

class UIWindow;

enum class UIUserInterfaceIdiom { phone = 0, pad = 1, mac = 5 };

/// The device the application runs on; the host sets the idiom before it makes the first window.
class UIDevice final {
public:
    static UIDevice& currentDevice();
    UIUserInterfaceIdiom userInterfaceIdiom() const { return idiom_; }
    void setUserInterfaceIdiom(UIUserInterfaceIdiom idiom) { idiom_ = idiom; }

private:
    UIUserInterfaceIdiom idiom_ = UIUserInterfaceIdiom::phone;
};

/// The screen of the first window. Its bounds are those of that window.
class UIScreen final {
public:
    static UIScreen& mainScreen();
    CGRect bounds() const;
    void setBounds(CGRect bounds) {
        bounds_ = bounds;
        hasBounds_ = true;
    }
    CGFloat scale() const;

private:
    CGRect bounds_;
    bool hasBounds_ = false;
};

/// The running application: its windows in the order they were made, and what it asks of the system.
class UIApplication final {
public:
    static UIApplication& sharedApplication();
    /// The first window; null when there is none.
    UIWindow* firstWindow() const { return windows_.empty() ? nullptr : windows_.front(); }
    const std::vector<UIWindow*>& windows() const { return windows_; }

    /// Opens an address (http, https, mailto) in the system's program for it; set by the backend. Absent:
    /// does nothing.
    std::function<bool(const std::string& url)> openURL;
    /// Puts text on the system's clipboard; set by the backend.
    std::function<void(const std::string& text)> setPasteboardText;
    /// Reads the system's clipboard; `handler` runs once, on the main thread. Set by the backend; absent: no
    /// clipboard.
    std::function<void(std::function<void(UITransferItems)> handler)> readPasteboard;
    /// Lets the user choose a file in the system's dialog, over `window`; `handler` runs once, on the main
    /// thread, with the paths chosen, none when it was cancelled. Set by the backend; absent: there is no
    /// such dialog.
    std::function<void(UIWindow* window, const UIFileRequest& request,
                       std::function<void(std::vector<std::string> paths)> handler)>
        chooseFiles;
    /// Has a screen reader announce `text`; set by the backend.
    std::function<void(const std::string& text)> announce;

private:
    friend class UIWindow;
    std::vector<UIWindow*> windows_;
};

}  // namespace ostrel
