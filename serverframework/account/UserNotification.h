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
    /// The newest first, without records that have no id.
    std::vector<UserNotification> notifications;
    /// The number of unread notifications on all pages.
    std::int64_t unread = 0;
    /// Names the page of older notifications; absent on the last page.
    std::optional<std::string> next;
};

/// Gets a page, or an empty page and an error, which is an English sentence.
using NotificationsHandler =
    std::function<void(const UserNotificationPage& page, const std::optional<std::string>& error)>;
/// Gets the number of the user's notifications that are still unread; 0 when there is an error.
using UnreadHandler = std::function<void(std::int64_t unread, const std::optional<std::string>& error)>;

}  // namespace ostrel
