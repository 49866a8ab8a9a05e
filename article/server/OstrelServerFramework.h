#pragma once

#include "article/server/NSDjango.h"
#include "article/server/OstrelLoginViewController.h"
#include "article/server/OstrelRequestManager.h"
#include "article/server/OstrelServer.h"
#include "article/server/OstrelServerHtmlResultObject.h"

#include <memory>

namespace ostrel {

/// Everything the module requires of a server framework, in one object that the host installs before it makes the first
/// screen. The class operations of the module's boundary (`OstrelServer::shareServer` and its like) lead here.
class OstrelServerFramework {
public:
    virtual ~OstrelServerFramework() = default;

    virtual OstrelServer& shareServer() = 0;
    virtual OstrelRequestManager& requestManager() = 0;
    virtual std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string& html) = 0;
    virtual std::shared_ptr<UIViewController> loginController(LoginHandler handler) = 0;
    virtual std::optional<NSDate> dateFromServerText(std::string_view text) = 0;
    virtual std::string encodeForQuery(std::string_view text) = 0;

    /// Replaces the framework in use; null removes it. Main thread, while no request is under way.
    static void install(std::shared_ptr<OstrelServerFramework> framework);
    /// The framework in use, which lives at least as long as it is held; null when there is none. Any thread.
    static std::shared_ptr<OstrelServerFramework> current();
    /// The framework in use. Calling it with none installed is a programming error and ends the process with a message.
    static OstrelServerFramework& installed();
};

}  // namespace ostrel
