#include "serverframework/client/Notifications.h"

#include "serverframework/http/WebAddress.h"

#include <charconv>
#include <utility>

namespace ostrel {

namespace {

std::int64_t countOf(const std::string& text) {
    std::int64_t count = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), count);
    return fault == std::errc() && end == text.data() + text.size() && count > 0 ? count : 0;
}

/// The text of a string; empty for other types, so that a number in the place of a text is not shown.
std::string textOf(const Value& value) { return std::string(value.string()); }

UserNotificationPage pageOf(const ParsedAnswer& result) {
    UserNotificationPage page;
    page.unread = countOf(result.resultString());
    page.next = result.moreResultsURL();
    for (const Dictionary& record : result.resultsArray()) {
        if (!record["id"].isNumber()) continue;
        UserNotification notification;
        notification.id = record["id"].integer();
        notification.senderId = record["auth_id"].integer();
        notification.senderName = textOf(record["auth_name"]);
        notification.date = NSDate::fromISO8601(record["date"].string());
        notification.title = textOf(record["title"]);
        notification.text = textOf(record["text"]);
        notification.isRead = record["read"].boolean();
        page.notifications.push_back(std::move(notification));
    }
    return page;
}

}  // namespace

Notifications::Notifications(std::shared_ptr<HttpServerConnection> server, std::shared_ptr<Session> session)
    : server_(std::move(server)), session_(std::move(session)) {}

void Notifications::ask(HttpServerConnection::Sending sending,
                        std::function<void(const ParsedAnswer*, const std::optional<std::string>& error)> handler) {
    server_->send(std::move(sending), [session = session_, generation = session_->generation(),
                                       handler = std::move(handler)](const JudgedAnswer& answer) {
        std::optional<std::string> error = answer.error;
        if (!error && session->generation() != generation) error = cancelledText;
        if (!error && !answer.result) error = "The answer cannot be read: it is empty.";
        if (!error) error = answer.result->errString();
        if (!error && !answer.result->success()) error = "The server did not do it.";
        handler(error ? nullptr : answer.result.get(), error);
    });
}

void Notifications::load(const std::optional<std::string>& next, NotificationsHandler handler) {
    HttpServerConnection::Sending sending;
    sending.path = next.value_or("account/notifications");
    ask(std::move(sending),
        [handler = std::move(handler)](const ParsedAnswer* result, const std::optional<std::string>& error) {
            if (handler) handler(result ? pageOf(*result) : UserNotificationPage(), error);
        });
}

void Notifications::markRead(std::int64_t upTo, UnreadHandler handler) {
    HttpServerConnection::Sending sending;
    sending.path = "account/notifications_read";
    sending.form = FormFields{{"up_to", std::to_string(upTo)}};
    ask(std::move(sending),
        [handler = std::move(handler)](const ParsedAnswer* result, const std::optional<std::string>& error) {
            if (handler) handler(result ? countOf(result->resultString()) : 0, error);
        });
}

}  // namespace ostrel
