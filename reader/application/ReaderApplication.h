#pragma once

#include "reader/application/ReaderOptions.h"
#include "reader/application/ReaderWindow.h"
#include "reader/screens/ReaderRootController.h"
#include "reader/services/ReaderLog.h"
#include "serverframework/account/SessionStore.h"

#include <memory>
#include <string>

namespace ostrel {

/// A complete host in one object. Shows an embedder what is made in which order: the resources, the server framework,
/// the media backend, the window with its screens, the sink of the log; and in which order all of it ends. At most one
/// exists at a time. A program that uses the window by itself reaches it through the accessors below. Main thread.
class ReaderApplication final {
public:
    /// `sessionStore` null: the session lasts as long as the process.
    ReaderApplication(const ReaderOptions& options, std::string serverAddress,
                      std::shared_ptr<SessionStore> sessionStore);
    ~ReaderApplication();

    /// Shows the window. False with a sentence in `error` when the server's address or the resources cannot be used.
    bool open(std::string* error);
    /// Opens the log's own window, or brings it to the front.
    void showLogWindow();
    /// Prints "first list painted" and ends the event loop once everybody's articles are on screen; for measuring
    /// starts.
    void quitAfterFirstList();

    // Valid once `open` has succeeded.
    QQuickWindow& window() { return window_->quickWindow(); }
    UIWindow& rootView() { return window_->rootView(); }
    QtWindowView& view() { return window_->view(); }
    ReaderRootController& root() { return *root_; }
    HttpServerFramework& framework() { return *framework_; }
    ReaderLog& log() { return *log_; }
    /// Null while the log has no window of its own.
    QQuickWindow* logWindow() { return logWindow_ ? &logWindow_->quickWindow() : nullptr; }

private:
    void openWindow();
    ReaderOptions options_;
    std::string serverAddress_;
    std::shared_ptr<SessionStore> sessionStore_;
    std::shared_ptr<HttpServerFramework> framework_;
    std::unique_ptr<ReaderWindow> window_, logWindow_;
    std::shared_ptr<ReaderRootController> root_;
    const std::shared_ptr<ReaderLog> log_ = std::make_shared<ReaderLog>();
};

}  // namespace ostrel
