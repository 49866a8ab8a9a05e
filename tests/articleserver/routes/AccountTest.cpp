#include "tests/articleserver/ServerFixture.h"

#include "articleserver/media/ServerPicture.h"

#include <chrono>

namespace articleserver {

namespace {

class AccountTest : public ServerTest {
protected:
    Answer signIn(const std::string& name, const std::string& password) {
        return post("/account/sign_in", {{"name", name}, {"password", password}});
    }
    Answer uploadAvatar(const std::string& bytes, const std::string& cookies, const char* part = "image.jpg") {
        return upload("/account/avatar", {{part, bytes, "image.jpg", "image/jpeg"}}, cookies);
    }
};

constexpr ServerTime minute = 60'000;
constexpr ServerTime day = 24 * 60 * minute;

}  // namespace

TEST_F(AccountTest, SignUpChecksNameAndPassword) {
    struct Case {
        std::string name;
        std::string password;
        int status;
    };
    const std::string good = "12345678";
    std::string forty;
    for (int count = 0; count < 40; ++count) forty += "林";
    for (const Case& tried :
         {Case{"", good, 400}, Case{" \t\xE3\x80\x80", good, 400}, Case{std::string(41, 'x'), good, 400},
          Case{"a\nb", good, 400}, Case{"a\x7F", good, 400}, Case{"a right-to-left override \u202E", good, 400},
          Case{"a\u0085", good, 400}, Case{"Ada", "1234567", 400}, Case{"Ada", std::string(257, 'x'), 400},
          Case{forty, "密密密密密密密密", 200}, Case{"  Ada Fern  ", std::string(256, 'x'), 200},
          Case{"ada fern", good, 409}, Case{"ＡＤＡ ＦＥＲＮ", good, 409}, Case{"Straße", good, 200},
          Case{"STRASSE", good, 409}, Case{"👩‍🌾", good, 200}}) {
        Answer answer = post("/account/sign_up", {{"name", tried.name}, {"password", tried.password}});
        EXPECT_EQ(answer.status, tried.status) << tried.name << " " << answer.body;
        EXPECT_EQ(answer.json["success"], tried.status == 200);
        EXPECT_EQ(answer.json["user"].is_null(), tried.status != 200) << answer.body;
        EXPECT_EQ(answer.cookie("ostrel_session").empty(), tried.status != 200);
        if (tried.status == 409) {
            EXPECT_EQ(answer.json["error"], "The name is taken.");
        }
    }
    EXPECT_EQ(signIn("ada FERN", std::string(256, 'x')).json["user"]["name"], "Ada Fern");
    EXPECT_EQ(post("/account/sign_up", {{"name", "Bo"}}).status, 400);
    EXPECT_EQ(post("/account/sign_in", {{"password", good}}).status, 400);
}

TEST_F(AccountTest, SessionLivesFromSignInToSignOut) {
    signUp("Ada");
    EXPECT_TRUE(get("/account/me").json["user"].is_null());
    Answer signedIn = signIn("Ada", "long enough");
    std::string session = signedIn.cookie("ostrel_session");
    std::string attributes = signedIn.header("Set-Cookie");
    for (const char* attribute : {"; HttpOnly", "; SameSite=Strict", "; Path=/", "; Max-Age=2592000"}) {
        EXPECT_NE(attributes.find(attribute), std::string::npos) << attribute;
    }
    EXPECT_EQ(get("/account/me", session).json["user"], nlohmann::json::parse(R"({"id":1,"name":"Ada"})"));
    EXPECT_EQ(get("/account/me", "other=1; " + session + "; more=2").json["user"]["id"], 1);

    Answer again = post("/account/sign_in", {{"name", "Ada"}, {"password", "long enough"}}, session);
    EXPECT_TRUE(get("/account/me", session).json["user"].is_null()) << "the old session of the browser ends";
    session = again.cookie("ostrel_session");
    EXPECT_EQ(get("/account/me", session).json["user"]["id"], 1);

    Answer out = post("/account/sign_out", {}, session);
    EXPECT_EQ(out.json["success"], true);
    EXPECT_EQ(out.cookie("ostrel_session"), "ostrel_session=");
    EXPECT_TRUE(get("/account/me", session).json["user"].is_null());
    EXPECT_EQ(post("/account/sign_out", {}).status, 200);
}

TEST_F(AccountTest, UseLengthensASessionAndDisuseEndsIt) {
    std::string session = signUp("Ada");
    now_ += day / 2;
    EXPECT_EQ(get("/account/me", session).cookie("ostrel_session"), "");
    now_ += 28 * day;
    EXPECT_EQ(get("/account/me", session).cookie("ostrel_session"), session);
    now_ += 29 * day;
    EXPECT_EQ(get("/account/me", session).json["user"]["id"], 1);
    now_ += 31 * day;
    EXPECT_TRUE(get("/account/me", session).json["user"].is_null());
}

TEST_F(AccountTest, NeitherPasswordsNorTokensAreStored) {
    const std::string token = signUp("Ada", "a memorable secret").substr(std::string("ostrel_session=").size());
    EXPECT_EQ(token.size(), 43U);
    EXPECT_FALSE(*store().session(token, now_)) << "the store knows the hash of a token";
    const std::string hash = store().userNamed("Ada")->value().passwordHash;
    EXPECT_TRUE(hash.starts_with("$argon2id$v=19$m=65536,t=2,p=1$")) << hash;
}

TEST_F(AccountTest, WrongNameAndWrongPasswordReadTheSame) {
    signUp("Ada");
    const auto timed = [&](const char* name, std::chrono::duration<double>& taken) {
        const auto begin = std::chrono::steady_clock::now();
        Answer answer = signIn(name, "not the one");
        taken = std::chrono::steady_clock::now() - begin;
        return answer;
    };
    std::chrono::duration<double> ofPassword{}, ofName{};
    Answer password = timed("Ada", ofPassword);
    Answer name = timed("Nobody", ofName);
    EXPECT_GT(ofName, ofPassword / 20) << "the time of the answer tells nothing either";
    EXPECT_EQ(password.status, 401);
    EXPECT_EQ(password.body, name.body);
    EXPECT_EQ(name.json["error"], "The name or the password is wrong.");
    // Nobody can sign in as a user without a password, such as a sample author.
    ASSERT_TRUE(store().addUser({0, "Ghost", "", ""}, now_));
    EXPECT_EQ(signIn("Ghost", "12345678").status, 401);
}

TEST_F(AccountTest, TenFailuresCloseANameForFiveMinutes) {
    signUp("Ada");
    signUp("Bo");
    for (int attempt = 0; attempt < 9; ++attempt) EXPECT_EQ(signIn("Ada", "not the one").status, 401);
    EXPECT_EQ(signIn("Ada", "long enough").status, 200);
    EXPECT_EQ(signIn("ADA", "not the one").status, 401);
    Answer closed = signIn("Ada", "long enough");
    EXPECT_EQ(closed.status, 429);
    EXPECT_EQ(closed.json["success"], false);
    EXPECT_FALSE(closed.header("Retry-After").empty());
    EXPECT_EQ(signIn("Bo", "long enough").status, 200);
    now_ += 5 * minute;
    EXPECT_EQ(signIn("Ada", "long enough").status, 200);
}

TEST_F(AccountTest, AvatarIsAnInitialUntilAGoodOneIsUploaded) {
    const std::string ada = signUp("Ada");
    signUp("林");
    const Answer initial = get("/account/avatar/1");
    EXPECT_EQ(initial.header("Content-Type"), "image/png");
    EXPECT_EQ(ServerPicture::decode(initial.body, 4096)->width(), 256);
    EXPECT_NE(get("/account/avatar/2").body, initial.body);
    EXPECT_EQ(get("/account/avatar/1", "", {{"If-None-Match", initial.header("ETag")}}).status, 304);
    EXPECT_EQ(get("/account/avatar/3").status, 404);

    const ServerPicture picture(300, 200);
    const std::string jpeg = picture.jpeg(90);
    EXPECT_EQ(uploadAvatar(jpeg, "").status, 401);
    EXPECT_EQ(uploadAvatar(jpeg, ada).status, 200);
    const Answer uploaded = get("/account/avatar/1");
    EXPECT_EQ(uploaded.header("Content-Type"), "image/jpeg");
    EXPECT_NE(uploaded.header("ETag"), initial.header("ETag"));
    struct Case {
        const char* what;
        std::string bytes;
        const char* part;
        int status;
    };
    for (const Case& tried :
         {Case{"text", "hello", "image.jpg", 415}, Case{"nothing", "", "image.jpg", 415},
          Case{"other part", jpeg, "picture", 400}, Case{"cut head", jpeg.substr(0, 100), "image.jpg", 400},
          Case{"cut png", picture.png().substr(0, 60), "image.jpg", 400},
          Case{"wide", ServerPicture(4097, 2).jpeg(50), "image.jpg", 413},
          Case{"high png", ServerPicture(2, 4097).png(), "image.jpg", 413},
          Case{"heavy", jpeg + std::string(5 * 1024 * 1024, 'x'), "image.jpg", 413},
          Case{"too heavy to read", std::string(6 * 1024 * 1024, 'x'), "image.jpg", 413}}) {
        const Answer answer = uploadAvatar(tried.bytes, ada, tried.part);
        EXPECT_EQ(answer.status, tried.status) << tried.what << " " << answer.body;
        EXPECT_EQ(answer.json["success"], false) << tried.what;
        EXPECT_EQ(get("/account/avatar/1").body, uploaded.body) << tried.what;
    }
    for (const std::string& good : {ServerPicture(4096, 3).jpeg(50), picture.png()}) {
        EXPECT_EQ(uploadAvatar(good, ada).status, 200);
    }
    EXPECT_EQ(mediaCount(), 1U) << "the replaced files are gone";
    start();
    EXPECT_EQ(get("/account/avatar/1").header("Content-Type"), "image/jpeg");
}

}  // namespace articleserver
