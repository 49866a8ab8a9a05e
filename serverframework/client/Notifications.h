#pragma once

#include "serverframework/account/UserNotification.h"
#include "serverframework/client/HttpServerConnection.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// Loads the signed-in user's messages, which a host shows. Handlers are called once, on the main thread, after the
/// call has returned. When the user signed out before the answer arrived, the error is "cancelled": no user sees
/// another user's messages. Main thread.
class Notifications final : public std::enable_shared_from_this<Notifications> {
public:
    Notifications(std::shared_ptr<HttpServerConnection> server, std::shared_ptr<Session> session);

    /// Loads the newest page, or the page that `next` of another page names.
    void load(const std::optional<std::string>& next, NotificationsHandler handler);
    /// Marks the messages up to and including this id as read.
    void markRead(std::int64_t upTo, UnreadHandler handler);

private:
    /// Calls `handler` with the answer, or with null and an error.
    void ask(HttpServerConnection::Sending sending,
             std::function<void(const ParsedAnswer*, const std::optional<std::string>& error)> handler);

    const std::shared_ptr<HttpServerConnection> server_;
    const std::shared_ptr<Session> session_;
};

}  // namespace ostrel
