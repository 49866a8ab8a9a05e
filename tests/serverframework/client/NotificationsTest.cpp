#include "tests/serverframework/FrameworkTest.h"

#include <string>

namespace ostrel {
namespace {

class NotificationsTest : public FrameworkTest {
protected:
    struct Loaded {
        UserNotificationPage page;
        std::optional<std::string> error;
    };
    Loaded load(const std::optional<std::string>& next = std::nullopt, bool signsOut = false) {
        std::optional<Loaded> loaded;
        framework().loadNotifications(next, [&](const auto& page, const auto& error) { loaded = Loaded{page, error}; });
        if (signsOut) framework().signOut();
        EXPECT_FALSE(loaded) << "called before the call returned";
        EXPECT_TRUE(runUntil([&] { return loaded.has_value(); }));
        return loaded.value_or(Loaded{});
    }
};

TEST_F(NotificationsTest, pagesAreReadLeniently) {
    signIn();
    server_.on("/account/notifications", answer(R"({"success":true,"error":null,"result":"2",
        "results":[{"id":9,"auth_name":"Bo","auth_id":2,"date":"2026-11-21T02:32:38.123Z","title":"Touch You",
                    "text":"Hello","read":false},
                   {"id":8,"auth_name":7,"date":"yesterday","read":"no"}, {"id":"x"}, 3],
        "more":"/account/notifications?before=8"})"));
    const Loaded first = load();
    EXPECT_FALSE(first.error);
    EXPECT_EQ(first.page.unread, 2);
    ASSERT_EQ(first.page.notifications.size(), 2u);
    const UserNotification& full = first.page.notifications[0];
    EXPECT_EQ(full.senderName + full.title + full.text, "BoTouch YouHello");
    EXPECT_EQ(full.senderId, 2);
    EXPECT_TRUE(full.date.has_value());
    const UserNotification& odd = first.page.notifications[1];
    EXPECT_EQ(odd.id, 8);
    EXPECT_EQ(odd.senderName, "");
    EXPECT_FALSE(odd.date.has_value());
    ASSERT_TRUE(first.page.next);
    EXPECT_FALSE(load(first.page.next).error);
    EXPECT_EQ(server_.requests().back().target, "/account/notifications?before=8");
    EXPECT_EQ(header(server_.requests().back(), "cookie"), "ostrel_session=secret");
}

TEST_F(NotificationsTest, failuresLeaveAnEmptyPageWithASentence) {
    const struct {
        Answer script;
        const char* error;
    } cases[] = {
        {answer(R"({"success":false,"error":"Sign in first."})", 401), "Sign in first."},
        {answer("<html>", 500), "HTTP 500 Reason"},
        {answer(""), "The answer cannot be read: it is empty."},
        {answer("{}"), "The server did not do it."},
        {Answer{}, "The server closed the connection without an answer."},
    };
    for (const auto& one : cases) {
        server_.on("/account/notifications", one.script);
        const Loaded loaded = load();
        EXPECT_EQ(loaded.error.value_or("none"), one.error);
        EXPECT_TRUE(loaded.page.notifications.empty());
    }
}

TEST_F(NotificationsTest, markingTellsWhatIsLeft) {
    server_.on("/account/notifications_read", answer(R"({"success":true,"result":"3"})"));
    std::int64_t left = -1;
    framework().markNotificationsRead(41, [&](std::int64_t unread, const auto&) { left = unread; });
    ASSERT_TRUE(runUntil([&] { return left >= 0; }));
    EXPECT_EQ(left, 3);
    EXPECT_EQ(server_.requests().back().bodyBegin, "up_to=41");
}

TEST_F(NotificationsTest, messagesThatComeAfterTheirUserHasGoneAreNotShown) {
    signIn();
    server_.on("/account/notifications",
               late(0.2, answer(R"({"success":true,"result":"1","results":[{"id":1,"text":"secret"}]})")));
    const Loaded loaded = load(std::nullopt, true);
    EXPECT_EQ(loaded.error, "cancelled");
    EXPECT_TRUE(loaded.page.notifications.empty());
}

}  // namespace
}  // namespace ostrel
