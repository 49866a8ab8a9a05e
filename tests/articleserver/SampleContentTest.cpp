#include "articleserver/media/ServerPicture.h"
#include "tests/articleserver/ServerFixture.h"

namespace articleserver {

namespace {

using Json = nlohmann::json;

/// A server on a small folder of samples, which each case writes before it starts the server.
class SampleContentTest : public ServerTest {
protected:
    void SetUp() override {
        publicUrl_ = "http://a";
        sampleFolder_ = samples_.path();
        samples_.write("a.jpg", picture_);
        samples_.write("a.mp4", bytesOf(OSTREL_SOURCE_DIR "/samples/clips/wheel.mp4"));
        samples_.write("cut.jpg", picture_.substr(0, picture_.size() / 2));
        samples_.write("text.mp4", "no clip");
    }
    void write(const Json& content) { samples_.write("samples.json", content.dump()); }
    std::string fileAt(const Json& url) { return get(url.get<std::string>().substr(publicUrl_.size())).body; }

    TemporaryFolder samples_;
    const std::string picture_ = ServerPicture(60, 40).jpeg(80);
    const Json good_ = Json::parse(R"({
        "people": [{"name": "Ada", "password": "long enough", "portrait": "a.jpg"}, {"name": "Lin"}],
        "articles": [{"author": "Lin", "minutesAgo": 3, "title": "t", "text": ["a", "b\r", ""], "likes": 3,
                      "images": [{"file": "a.jpg", "text": "c"}, {"file": "a.jpg"}],
                      "videos": [{"file": "a.mp4", "thumbnail": "a.jpg"}],
                      "comments": [{"author": "Ada", "text": "1"}, {"author": "Lin", "text": "2"}]},
                     {"author": "Ada", "minutesAgo": 60, "title": "", "text": [], "openComment": false}],
        "messages": [{"from": "Lin", "to": "Ada", "minutesAgo": 1, "title": "t", "text": "m"}]})");
};

}  // namespace

TEST_F(SampleContentTest, TheFolderComesInWhollyAndOnce) {
    write(good_);
    start();
    const Json records = get("/article/articles_json.html").json["results"];
    ASSERT_EQ(records.size(), 2U);
    Json wanted = Json::parse(R"({"id": 2, "auth_name": "Lin", "auth_id": 2, "title": "t", "liked": 3,
        "text": "a\nb\r\n", "comment": 2, "open_comment": true, "modifie_date": "2026-11-21T02:29:38.123Z"})");
    for (const auto& [key, value] : wanted.items()) EXPECT_EQ(records[0][key], value) << key;
    EXPECT_EQ(records[1]["modifie_date"], "2026-11-21T01:32:38.123Z");
    EXPECT_EQ(records[1]["open_comment"], false);
    ASSERT_EQ(records[0]["images"].size(), 2U);
    EXPECT_EQ(records[0]["images"][0]["text"], "c");
    EXPECT_EQ(records[0]["images"][0]["image_width"], 60);
    EXPECT_EQ(fileAt(records[0]["images"][1]["image"]), picture_);
    EXPECT_EQ(fileAt(records[0]["videos"][0]["video"]), samples_.read("a.mp4"));
    EXPECT_TRUE(ServerPicture::decode(fileAt(records[0]["videos"][0]["thumbnail"]), 60));
    EXPECT_EQ(get("/account/avatar/1").header("Content-Type"), "image/jpeg");
    const Json comments = get("/article/article_2_json.html").json["comments"];
    EXPECT_EQ(comments[0]["date"], "2026-11-21T02:30:38.123Z") << "a third of the time since the article";
    EXPECT_EQ(comments[0]["auth_name"], "Ada");
    EXPECT_EQ(comments[1]["text"], "2");

    const std::size_t files = mediaCount();
    EXPECT_EQ(files, 7U);
    for (int starts = 0; starts < 2; ++starts) {
        ASSERT_EQ(server_->sampleAccounts().size(), 1U);
        EXPECT_EQ(server_->sampleAccounts()[0].name, "Ada");
        const Answer signedIn = post("/account/sign_in", {{"name", "Ada"}, {"password", "long enough"}});
        const Answer messages = get("/account/notifications", signedIn.cookie("ostrel_session"));
        EXPECT_EQ(messages.json["results"].size(), 1U);
        start();
        EXPECT_EQ(get("/article/articles_json.html").json["results"], records) << "a filled store stays";
        EXPECT_EQ(mediaCount(), files);
    }
    // On a filled store the folder serves for the accounts alone, so its faults do not matter.
    for (const auto& [text, lines] :
         {std::pair("{", 1), std::pair(R"({"people": [{"name": "Ada", "password": "another one"}]})", 0)}) {
        samples_.write("samples.json", text);
        testing::internal::CaptureStderr();
        start();
        const std::string errors = testing::internal::GetCapturedStderr();
        EXPECT_EQ(std::count(errors.begin(), errors.end(), '\n'), lines) << errors;
        EXPECT_TRUE(server_->sampleAccounts().empty()) << text;
        EXPECT_EQ(get("/article/articles_json.html").json["results"], records);
    }
}

TEST_F(SampleContentTest, ABrokenFolderIsOneSentenceAndLeavesNothing) {
    struct Case {
        /// A place in the good content (RFC 6901), and the JSON to put there; null removes the value.
        const char* place;
        const char* json;
        const char* part;
    };
    const char* image = "/articles/0/images/0/file";
    for (const Case& tried : {Case{"", "[]", "not an object"},
                              Case{"", "{}", "nobody in \"people\""},
                              Case{"/people", nullptr, "\"Lin\", who is not in \"people\""},
                              Case{"/people/0/password", "\"short\"", "person 1 could not sign up"},
                              Case{"/people/1/name", "\"\\u202E\"", "person 2 could not sign up"},
                              Case{"/people/-", R"({"name": "ADA"})", "The name is taken."},
                              Case{"/people/0/portrait", "\"text.mp4\"", "neither JPEG nor PNG"},
                              Case{"/articles", "\"none\"", "\"articles\" that is not a list"},
                              Case{"/articles/0/title", nullptr, "article 1 has no text \"title\""},
                              Case{"/articles/1/text", "\"a\"", "no list of lines \"text\""},
                              Case{"/articles/0/text/1", "1", "article 1 has no text \"text\""},
                              Case{"/articles/0/minutesAgo", "-1", "no number \"minutesAgo\" from 0"},
                              Case{"/articles/0/likes", "2.5", "no number \"likes\""},
                              Case{"/articles/0/opencomment", "true", "unknown key \"opencomment\""},
                              Case{"/articles/0/openComment", "1", "neither true nor false"},
                              Case{"/articles/0/comments/1/author", "\"X\"", "comment 2 of article 1"},
                              Case{"/messages/0/to", nullptr, "message 1 has no text \"to\""},
                              Case{image, "\"none.jpg\"", "none.jpg: No such file"},
                              Case{image, "\".\"", "Is a directory"},
                              Case{image, "\"cut.jpg\"", "cut.jpg was refused: The picture is broken."},
                              Case{image, "\"a.mp4\"", "a.mp4 was refused: The picture is not a JPEG"},
                              Case{"/articles/0/videos/0/file", "\"text.mp4\"", "text.mp4"},
                              Case{"/articles/0/videos/0/thumbnail", "\"cut.jpg\"", "cut.jpg was refused"},
                              Case{nullptr, "", "samples.json is not JSON."},
                              Case{nullptr, "{\"\xFF\": 1}", "samples.json is not JSON."}}) {
        if (tried.place) {
            const Json change = {{"op", tried.json ? "add" : "remove"},
                                 {"path", tried.place},
                                 {"value", Json::parse(tried.json ? tried.json : "0")}};
            write(good_.patch(Json::array({change})));
        } else {
            samples_.write("samples.json", tried.json);
        }
        const auto server = tryStart();
        ASSERT_FALSE(server) << tried.part;
        const std::string& text = server.failure().text;
        EXPECT_NE(text.find(tried.part), std::string::npos) << text << " for " << tried.part;
        EXPECT_NE(text.find(samples_.path()), std::string::npos) << text;
        EXPECT_EQ(mediaCount(), 0U) << tried.part;
    }
    write(good_);
    start();
    EXPECT_EQ(get("/article/articles_json.html").json["results"].size(), 2U);
}

}  // namespace articleserver
