#pragma once

#include "platform/foundation/runloop/NSDate.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// A short message that another user sent to the signed-in one.
struct UserNotification {
    std::int64_t id = 0;
    std::int64_t senderId = 0;
    std::string senderName;
    /// Absent when the server's text is no date.
    std::optional<NSDate> date;
    std::string title;
    std::string text;
    bool isRead = false;
};

struct UserNotificationPage {
    /// Newest first. Records without an id are left out.
    std::vector<UserNotification> notifications;
    /// Of all pages.
    std::int64_t unread = 0;
    /// Names the page of older ones; absent when there are none.
    std::optional<std::string> next;
};

/// The page is empty beside an error, an English sentence.
using NotificationsHandler =
    std::function<void(const UserNotificationPage& page, const std::optional<std::string>& error)>;
/// How many of the user's are still unread; 0 beside an error.
using UnreadHandler = std::function<void(std::int64_t unread, const std::optional<std::string>& error)>;

}  // namespace ostrel
