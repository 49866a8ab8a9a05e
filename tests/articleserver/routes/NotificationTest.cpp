#include "tests/articleserver/ServerFixture.h"

#include <vector>

namespace articleserver {

namespace {

class NotificationTest : public ServerTest {
protected:
    Answer send(const std::string& to, const std::string& cookie, const std::string& text = "Hello",
                const std::string& title = "Touch You") {
        return post("/account/notify", {{"user_id", to}, {"title", title}, {"text", text}}, cookie);
    }
    nlohmann::json received(const std::string& cookie) { return get("/account/notifications", cookie).json; }
};

}  // namespace

TEST_F(NotificationTest, AMessageIsThereForItsAddresseeAloneUntilAndAfterItIsRead) {
    std::string ada = signUp("Ada");
    std::string bo = signUp("Bo");
    EXPECT_EQ(send("1", bo, "a & b = 你好 <b>").json["success"], true);
    now_ += 1000;
    EXPECT_EQ(send("1", bo, "").status, 200) << "a title alone is a message";
    EXPECT_EQ(send("1", ada, "to myself").status, 200);

    nlohmann::json list = received(ada);
    EXPECT_EQ(list["result"], "3");
    ASSERT_EQ(list["results"].size(), 3U);
    EXPECT_EQ(list["results"][2], nlohmann::json::parse(R"({"id": 1, "auth_name": "Bo", "auth_id": 2,
        "date": "2026-11-21T02:32:38.123Z", "title": "Touch You", "text": "a & b = 你好 <b>", "read": false})"));
    EXPECT_EQ(received(bo)["results"].size(), 0U);

    EXPECT_EQ(post("/account/notifications_read", {{"up_to", "2"}}, bo).json["result"], "0");
    EXPECT_EQ(received(ada)["result"], "3") << "nobody reads another's messages";
    EXPECT_EQ(post("/account/notifications_read", {{"up_to", "2"}}, ada).json["result"], "1");
    list = received(ada);
    EXPECT_EQ(list["results"][0]["read"], false);
    EXPECT_EQ(list["results"][1]["read"], true);

    start();
    EXPECT_EQ(received(ada)["result"], "1") << "kept over a restart";
}

TEST_F(NotificationTest, RefusalsSayWhyAndStoreNothing) {
    std::string ada = signUp("Ada");
    struct Case {
        httplib::Params form;
        std::string cookie;
        int status;
        const char* error;
    };
    const std::string long101(101, 'x');
    for (const Case& tried :
         {Case{{{"user_id", "1"}, {"title", "t"}, {"text", "x"}}, "", 401, "Sign in first."},
          Case{{{"title", "t"}, {"text", "x"}}, ada, 400, "The message names no user."},
          Case{{{"user_id", "1 OR 1"}, {"title", "t"}}, ada, 400, "The message names no user."},
          Case{{{"user_id", "99"}, {"title", "t"}}, ada, 404, "There is no such user."},
          Case{{{"user_id", "1"}, {"title", " "}, {"text", "\n"}}, ada, 400, "The message is empty."},
          Case{{{"user_id", "1"}}, ada, 400, "The message is empty."},
          Case{{{"user_id", "1"}, {"title", long101}}, ada, 413, "The title of the message is too long."},
          Case{{{"user_id", "1"}, {"title", "t"}, {"text", std::string(2001, 'x')}},
               ada,
               413,
               "The message is too long."}}) {
        Answer answer = post("/account/notify", tried.form, tried.cookie);
        EXPECT_EQ(answer.status, tried.status) << tried.error;
        EXPECT_EQ(answer.json["error"], tried.error);
        EXPECT_EQ(answer.json["success"], false);
    }
    EXPECT_EQ(received(ada)["results"].size(), 0U);
    EXPECT_EQ(get("/account/notifications").status, 401);
    EXPECT_EQ(get("/account/notifications?before=x", ada).status, 400);
    EXPECT_EQ(post("/account/notifications_read", {{"up_to", "1"}}).status, 401);
    EXPECT_EQ(post("/account/notifications_read", {{"up_to", "-1"}}, ada).status, 400);
    EXPECT_EQ(get("/account/notify", ada).status, 405);
}

TEST_F(NotificationTest, ComeInPagesAndAreThrottledBySender) {
    std::string ada = signUp("Ada");
    std::string bo = signUp("Bo");
    int taken = 0;
    while (taken < 50 && send("1", bo, std::to_string(taken)).status == 200) ++taken;
    EXPECT_EQ(taken, 30);
    EXPECT_EQ(send("2", bo).json["error"], "Too many messages. Try again in a few minutes.");
    EXPECT_EQ(send("2", ada).status, 200);
    nlohmann::json first = received(ada);
    EXPECT_EQ(first["results"].size(), 20U);
    ASSERT_EQ(first["more"], "/account/notifications?before=11");
    nlohmann::json second = get(first["more"], ada).json;
    ASSERT_EQ(second["results"].size(), 10U);
    EXPECT_EQ(second["results"][9]["text"], "0");
    EXPECT_TRUE(second["more"].is_null());
    EXPECT_EQ(second["result"], "30") << "the count is of all unread ones";
}

}  // namespace articleserver
