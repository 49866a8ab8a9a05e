#pragma once

#include "article/server/OstrelServerUserObject.h"

#include <functional>
#include <memory>
#include <string>

namespace ostrel {

class UIViewController;

/// Called when the login ends; the user is null unless the login succeeded.
using LoginHandler =
    std::function<void(bool succeeded, std::shared_ptr<const OstrelServerUserObject> user, const std::string& message)>;

/// The server framework's login screen.
class OstrelLoginViewController {
public:
    /// A login controller of the installed framework. The caller presents it, and dismisses it after a login that
    /// succeeded. Main thread.
    static std::shared_ptr<UIViewController> shareWithHandler(LoginHandler handler);
};

}  // namespace ostrel
