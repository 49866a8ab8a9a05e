#pragma once

#include "platform/foundation/values/Data.h"

#include <functional>
#include <optional>
#include <string>

namespace ostrel {

/// The shared fetcher of media bytes by absolute address, with a cache; required of the server framework.
class OstrelRequestManager {
public:
    using Handler =
        std::function<void(const Data& data, bool loaded, const std::optional<std::string>& error)>;
    virtual ~OstrelRequestManager() = default;

    static OstrelRequestManager& defaultOstrelRequestManager();

    /// Fetches `url`. Returns the data at once when it is cached (null data otherwise); the handler is called once, on
    /// the main thread, independently of that. `data` is meaningful only when `loaded` is true. Any thread.
    virtual Data request(const std::string& url, Handler handler) = 0;

    /// Takes back one request of `url` that has not been answered. When all of them were taken back, the fetch ends and
    /// their handlers are called with an error. A manager may go on regardless. Any thread.
    virtual void cancel(const std::string& /*url*/) {}
};

}  // namespace ostrel
