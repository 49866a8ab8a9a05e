#pragma once

#include "article/server/NSDjango.h"
#include "article/server/OstrelLoginViewController.h"
#include "article/server/OstrelRequestManager.h"
#include "article/server/OstrelServer.h"
#include "article/server/OstrelServerHtmlResultObject.h"

#include <memory>

namespace ostrel {

/// All that the module needs of a server framework, in one object that the host installs before it makes the first
/// screen. The static operations of the boundary's classes, such as `OstrelServer::shareServer`, call this object.
class OstrelServerFramework {
public:
    virtual ~OstrelServerFramework() = default;

    virtual OstrelServer& shareServer() = 0;
    virtual OstrelRequestManager& requestManager() = 0;
    /// Parses an answer's text that came without its result (see `AnswerText`); never null. Any thread.
    virtual std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string& html) = 0;
    virtual std::shared_ptr<UIViewController> loginController(LoginHandler handler) = 0;
    virtual std::optional<NSDate> dateFromServerText(std::string_view text) = 0;
    virtual std::string encodeForQuery(std::string_view text) = 0;

    /// Replaces the framework in use; null removes it. Main thread, while no request is under way.
    static void install(std::shared_ptr<OstrelServerFramework> framework);
    /// The framework in use; null when there is none. Any thread.
    static std::shared_ptr<OstrelServerFramework> current();
    /// The framework in use. Calling this while none is installed is a programming error and ends the process with a
    /// message.
    static OstrelServerFramework& installed();
};

}  // namespace ostrel
