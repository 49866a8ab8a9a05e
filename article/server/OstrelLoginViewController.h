#pragma once

#include "article/server/OstrelServerUserObject.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

class UIViewController;

/// Called when the login ends; the user is null unless it succeeded.
using LoginHandler = std::function<void(bool succeeded, std::shared_ptr<const OstrelServerUserObject> user,
                                        const std::string& message)>;

/// The server framework's login screen.
class OstrelLoginViewController {
public:
    /// A login controller of the installed framework, to be presented by the caller, who also dismisses it when the
    /// login succeeded. Main thread.
    static std::shared_ptr<UIViewController> shareWithHandler(LoginHandler handler);
};

}  // namespace ostrel
