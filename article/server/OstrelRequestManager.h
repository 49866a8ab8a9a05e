#pragma once

#include "platform/foundation/values/Data.h"

#include <functional>
#include <optional>
#include <string>

namespace ostrel {

/// Fetches the bytes of media by absolute address, with a cache. The server framework implements it.
class OstrelRequestManager {
public:
    using Handler = std::function<void(const Data& data, bool loaded, const std::optional<std::string>& error)>;
    virtual ~OstrelRequestManager() = default;

    static OstrelRequestManager& defaultOstrelRequestManager();

    /// Fetches `url`. Returns the data when it is cached, else null data; in both cases the handler is called once, on
    /// the main thread. Its `data` counts only when `loaded` is true. Any thread.
    virtual Data request(const std::string& url, Handler handler) = 0;

    /// Cancels one request of `url` that has not been answered. When all of them are cancelled, the fetch ends and
    /// their handlers get an error. A manager may ignore this call. Any thread.
    virtual void cancel(const std::string& /*url*/) {}
};

}  // namespace ostrel
