#pragma once

#include "serverframework/account/UserNotification.h"
#include "serverframework/client/HttpServer.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The signed-in user's own notifications, for the place where a host shows them. Handlers are called once, on the main
/// thread, never before the call returned. When somebody else has signed in, or nobody is any more, before the answer
/// came, the error is "cancelled": no user sees another's messages. Main thread.
class Notifications final : public std::enable_shared_from_this<Notifications> {
public:
    Notifications(std::shared_ptr<HttpServer> server, std::shared_ptr<Session> session);

    /// The newest page, or the one that `next` of another page names.
    void load(const std::optional<std::string>& next, NotificationsHandler handler);
    /// Marks everything up to and including this id as read.
    void markRead(std::int64_t upTo, UnreadHandler handler);

private:
    /// `handler` gets the answer or, without one, an error.
    void ask(HttpServer::Sending sending,
             std::function<void(const ServerResult*, const std::optional<std::string>& error)> handler);

    const std::shared_ptr<HttpServer> server_;
    const std::shared_ptr<Session> session_;
};

}  // namespace ostrel
