#include "platform/foundation/runloop/NSNotificationCenter.h"
#include "tests/serverframework/FrameworkTest.h"

#include <memory>
#include <string>

namespace ostrel {
namespace {

/// Counts the notifications of a changed user, and answers later when told so.
class SessionTest : public FrameworkTest {
protected:
    SessionTest() {
        NSNotificationCenter::defaultCenter().addObserver(this, "Current_User_Changed_Notification_Name",
                                                          [this](const NSNotification&) { ++changes_; });
    }
    ~SessionTest() override { NSNotificationCenter::defaultCenter().removeObserver(this); }

    struct Outcome {
        std::shared_ptr<const OstrelServerUserObject> user;
        std::optional<std::string> error;
    };
    Outcome wait(const std::function<void(SignInHandler)>& operation) {
        std::optional<Outcome> outcome;
        operation([&](const auto& user, const auto& error) { outcome = Outcome{user, error}; });
        EXPECT_FALSE(outcome) << "called before the call returned";
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(Outcome{});
    }
    Outcome restore() {
        return wait([this](SignInHandler handler) { framework().restoreSession(std::move(handler)); });
    }
    std::string cookieSentTo(const std::string& path) {
        get(path);
        return header(server_.requests().back(), "cookie");
    }

    int changes_ = 0;
};

TEST_F(SessionTest, signingInSetsTheUserAndSendsTheCookieFromThenOn) {
    server_.on("/a", answer("{}"));
    EXPECT_EQ(cookieSentTo("/a"), "");
    signIn();
    ASSERT_TRUE(client().currentUser());
    EXPECT_EQ(client().currentUser()->id, 7);
    EXPECT_EQ(client().currentUser()->name, "Ada");
    EXPECT_EQ(changes_, 1);
    EXPECT_EQ(server_.requests().back().bodyBegin, "name=Ada&password=password");
    EXPECT_EQ(cookieSentTo("/a"), "ostrel_session=secret");

    bool done = false;
    framework().requestManager().request(server_.address() + "/media",
                                         [&](const Data&, bool, const auto&) { done = true; });
    ASSERT_TRUE(runUntil([&] { return done; }));
    EXPECT_EQ(header(server_.requests().back(), "cookie"), "") << "media get no cookies";
    client().notificationUserID(Value::parse("12"), "Touch You", "Hello & bye");
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/account/notify") == 1; }));
    EXPECT_EQ(server_.requests().back().bodyBegin, "text=Hello%20%26%20bye&title=Touch%20You&user_id=12");
}

TEST_F(SessionTest, aFailedSignInChangesNothing) {
    signIn();
    const struct {
        Answer script;
        const char* error;
    } cases[] = {
        {answer(R"({"success":false,"error":"The name or the password is wrong."})", 401,
                "Set-Cookie: ostrel_session=other; Path=/\r\n"),
         "The name or the password is wrong."},
        {answer(R"({"success":false,"error":"Busy."})"), "Busy."},
        {answer(R"({"success":true,"user":null})"), "The answer cannot be read: it names no user."},
        {answer(R"({"success":true,"user":{"id":"x"}})"), "The answer cannot be read: it names no user."},
        {Answer{}, "The server closed the connection without an answer."},
    };
    for (const auto& one : cases) {
        server_.on("/account/sign_in", one.script);
        const Outcome outcome =
            wait([this](SignInHandler handler) { framework().signIn("Ada", "wrong", std::move(handler)); });
        EXPECT_FALSE(outcome.user);
        EXPECT_EQ(outcome.error.value_or("none"), one.error);
    }
    EXPECT_TRUE(client().currentUser());
    EXPECT_EQ(changes_, 1);
    EXPECT_EQ(cookieSentTo("/a"), "ostrel_session=secret");
}

TEST_F(SessionTest, anAbandonedSignInSignsNobodyIn) {
    server_.on("/account/sign_in", late(0.1, answer(R"({"success":true,"user":{"id":7,"name":"Ada"}})", 200,
                                                    "Set-Cookie: ostrel_session=late; Path=/\r\n")));
    const Outcome outcome = wait([this](SignInHandler handler) {
        framework().signIn("Ada", "password", std::move(handler));
        framework().signInService().abandon();
    });
    EXPECT_EQ(outcome.error, "cancelled");
    EXPECT_FALSE(client().currentUser());
    EXPECT_EQ(cookieSentTo("/a"), "");
}

TEST_F(SessionTest, anUnauthorizedAnswerEndsTheSessionBeforeItsHandler) {
    signIn();
    server_.on("/a", answer(R"({"success":false,"error":"Sign in first."})", 401));
    bool wasSignedIn = true;
    client().request("/a", [&](const auto&, const auto& error) {
        wasSignedIn = client().currentUser() != nullptr;
        EXPECT_EQ(error, "Sign in first.");
    });
    ASSERT_TRUE(runUntil([&] { return changes_ == 2; }));
    EXPECT_FALSE(wasSignedIn);
    EXPECT_EQ(cookieSentTo("/a"), "");
    EXPECT_EQ(changes_, 2) << "a 401 without a session is no change";
}

TEST_F(SessionTest, anAnswerOfAFormerSessionTouchesNothing) {
    signIn("first");
    server_.on("/late", late(0.3, answer("{}", 401, "Set-Cookie: ostrel_session=first-again; Path=/\r\n")));
    bool answered = false;
    client().request("/late", [&](const auto&, const auto&) { answered = true; });
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/late") == 1; }));
    framework().signOut();
    EXPECT_FALSE(client().currentUser());
    signIn("second");
    ASSERT_TRUE(runUntil([&] { return answered; }));
    EXPECT_TRUE(client().currentUser());
    EXPECT_EQ(cookieSentTo("/a"), "ostrel_session=second");
}

TEST_F(SessionTest, signingOutTellsTheServerAndKeepsTheOtherCookies) {
    server_.on("/visit", answer("{}", 200, "Set-Cookie: ostrel_visitor=v; Path=/\r\n"));
    get("/visit");
    signIn();
    framework().signOut();
    EXPECT_FALSE(client().currentUser());
    EXPECT_EQ(changes_, 2);
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/account/sign_out") == 1; }));
    EXPECT_NE(header(server_.requests().back(), "cookie").find("ostrel_session=secret"), std::string::npos);
    EXPECT_EQ(cookieSentTo("/a"), "ostrel_visitor=v");
}

TEST_F(SessionTest, theSessionIsRestoredFromTheStore) {
    const auto store = std::make_shared<MemorySessionStore>();
    start({}, store);
    signIn();
    framework_.reset();

    server_.on("/account/me", [](const Request& request) {
        const bool known = header(request, "cookie") == "ostrel_session=secret";
        return answer(known ? R"({"success":true,"user":{"id":7,"name":"Ada"}})" : R"({"success":true,"user":null})");
    });
    start({}, store);
    EXPECT_FALSE(client().currentUser());
    EXPECT_EQ(restore().user->name, "Ada");
    EXPECT_EQ(client().currentUser()->id, 7);

    // A server that is out of reach does not cost the session; one that does not know it any more does.
    server_.on("/account/me", Answer{});
    start({}, store);
    EXPECT_TRUE(restore().error);
    server_.on("/account/me", answer(R"({"success":true,"user":null})"));
    start({}, store);
    const Outcome forgotten = restore();
    EXPECT_FALSE(forgotten.user || forgotten.error);
    store->load([](const std::string& text) { EXPECT_EQ(text, ""); });
}

TEST_F(SessionTest, aDamagedStoreOrOneOfAnotherServerIsNoSession) {
    const std::string cookie = "\t/\tFALSE\t0\tostrel_session\tx";
    for (const std::string& text :
         {std::string(), std::string("garbage"), std::string("\n\n\n"), "http://127.0.0.1:1\n127.0.0.1\tFALSE" + cookie,
          server_.address() + "\nevil.example\tTRUE" + cookie + "\nshort\tline"}) {
        const auto store = std::make_shared<MemorySessionStore>();
        store->save(text);
        start({}, store);
        const Outcome outcome = restore();
        EXPECT_FALSE(outcome.user || outcome.error) << text;
    }
    EXPECT_EQ(server_.requestCount("/account/me"), 0u);
}

}  // namespace
}  // namespace ostrel
