#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/routes/ArticleServiceParts.h"

namespace articleserver {

namespace {

constexpr const char* notificationsPath = "/account/notifications";

nlohmann::ordered_json notificationJson(const StoredNotification& notification) {
    return {{"id", notification.id},
            {"auth_name", notification.senderName},
            {"auth_id", notification.senderId},
            {"date", isoDate(notification.date)},
            {"title", notification.title},
            {"text", notification.text},
            {"read", notification.isRead}};
}

std::string fieldOf(const WebFields& form, std::string_view name) {
    auto found = form.find(name);
    return found == form.end() ? std::string() : found->second;
}

}  // namespace

WebReply ArticleService::notify(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto form = parseFields(context.request.body);
    if (!form) return failureReply(form.failure());
    auto recipient = decimalId(fieldOf(*form, "user_id"));
    if (!recipient) return failureReply({ServerFault::badInput, "The message names no user."});

    StoredNotification notification;
    notification.senderId = user->id;
    notification.recipientId = *recipient;
    notification.date = now_();
    notification.title = trimmedText(fieldOf(*form, "title"));
    notification.text = fieldOf(*form, "text");
    // A title without a text is a message, too: clients send one to draw attention.
    if (notification.title.empty() && trimmedText(notification.text).empty()) {
        return failureReply({ServerFault::badInput, "The message is empty."});
    }
    if (characterCount(notification.title) > ServerLimits::notificationTitleCharacters) {
        return failureReply({ServerFault::tooLarge, "The title of the message is too long."});
    }
    if (characterCount(notification.text) > ServerLimits::notificationCharacters) {
        return failureReply({ServerFault::tooLarge, "The message is too long."});
    }
    if (!notifications_.take(std::to_string(user->id), notification.date)) {
        return failureReply({ServerFault::throttled, "Too many messages. Try again in a few minutes."});
    }
    auto id = store_.addNotification(notification);
    if (!id) return failureReply(id.failure());
    return resultReply({});
}

WebReply ArticleService::listNotifications(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto before = pageStart(context);
    if (!before) return failureReply(before.failure());
    auto page = store_.notifications(user->id, *before, ServerLimits::pageSize);
    if (!page) return failureReply(page.failure());
    ResultAnswer answer;
    answer.result = std::to_string(page->unread);
    for (const StoredNotification& notification : page->notifications) {
        answer.results.push_back(notificationJson(notification));
    }
    if (page->hasMore) {
        answer.more = notificationsPath + ("?before=" + std::to_string(page->notifications.back().id));
    }
    return resultReply(answer);
}

WebReply ArticleService::markNotificationsRead(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto form = parseFields(context.request.body);
    if (!form) return failureReply(form.failure());
    // The client names the latest message that it showed, so that newer messages stay unread.
    auto upTo = decimalId(fieldOf(*form, "up_to"));
    if (!upTo) return failureReply({ServerFault::badInput, "The last message read is not a number."});
    auto unread = store_.markNotificationsRead(user->id, *upTo);
    if (!unread) return failureReply(unread.failure());
    ResultAnswer answer;
    answer.result = std::to_string(*unread);
    return resultReply(answer);
}

}  // namespace articleserver
