#pragma once

#include "reader/ReaderLog.h"
#include "reader/ReaderOptions.h"
#include "reader/ReaderRootController.h"
#include "serverframework/account/SessionStore.h"

#include <QQuickWindow>

#include <memory>
#include <string>

namespace ostrel {

class QtWindowView;

/// Puts the pieces together: resources, server framework, one window with the reader's screens. Main thread.
class ReaderApplication final {
public:
    /// `sessionStore` null: the session lasts as long as the process.
    ReaderApplication(const ReaderOptions& options, std::string serverAddress,
                      std::shared_ptr<SessionStore> sessionStore);
    ~ReaderApplication();

    /// False with a sentence in `error` when the server's address or the resources cannot be used.
    bool open(std::string* error);
    QQuickWindow& window() { return *quickWindow_; }
    UIWindow& rootView() { return *window_; }
    QtWindowView& view() { return *view_; }
    ReaderRootController& root() { return *root_; }
    HttpServerFramework& framework() { return *framework_; }
    ReaderLog& log() { return *log_; }
    /// Opens the log's own window, or brings it to the front.
    void showLogWindow();
    /// Null while it is closed.
    QQuickWindow* logWindow() { return logWindow_.get(); }
    /// Prints "first list painted" and ends the event loop once everybody's articles are on screen; for measuring starts.
    void quitAfterFirstList();

private:
    bool findResources(std::string* error);
    bool prepareHome(std::string* error);
    void installMedia();
    void closeLogWindow();
    ReaderOptions options_;
    std::string serverAddress_;
    std::shared_ptr<SessionStore> sessionStore_;
    std::shared_ptr<HttpServerFramework> framework_;
    std::unique_ptr<QQuickWindow> quickWindow_;
    std::shared_ptr<UIWindow> window_;
    QtWindowView* view_ = nullptr;
    std::shared_ptr<ReaderRootController> root_;
    const std::shared_ptr<ReaderLog> log_ = std::make_shared<ReaderLog>();
    std::unique_ptr<QQuickWindow> logWindow_;
    std::shared_ptr<UIWindow> logView_;
};

}  // namespace ostrel
