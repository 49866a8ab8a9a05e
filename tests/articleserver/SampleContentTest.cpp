#include "tests/articleserver/ServerFixture.h"

#include "articleserver/media/ServerPicture.h"

#include <fstream>
#include <functional>

namespace articleserver {

namespace {

using Json = nlohmann::json;

ServerResult<std::unique_ptr<ArticleServer>> startOn(const std::filesystem::path& data,
                                                     const std::filesystem::path& samples) {
    ArticleServerOptions options;
    options.dataFolder = data;
    options.sampleFolder = samples;
    return ArticleServer::start(options);
}

Json load(const ArticleServer& server, const std::string& path) {
    const auto result = httplib::Client("127.0.0.1", server.port()).Get(path);
    return result ? Json::parse(result->body, nullptr, false) : Json();
}

/// All records, newest first.
std::vector<Json> recordsOf(const ArticleServer& server) {
    std::vector<Json> records;
    for (std::string path = "/article/articles_json.html"; !path.empty();) {
        const Json page = load(server, path);
        for (const Json& record : page["results"]) records.push_back(record);
        path = page["more"].is_null() ? "" : page["more"].get<std::string>();
    }
    return records;
}

std::size_t filesIn(const std::filesystem::path& folder) {
    return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator(folder), {}));
}

std::string joined(const Json& lines) {
    std::string text;
    for (std::size_t index = 0; index < lines.size(); ++index)
        text += (index > 0 ? "\n" : "") + lines[index].get<std::string>();
    return text;
}

}  // namespace

TEST(SampleContentTest, TheFolderComesInWhollyAndOnce) {
    const std::filesystem::path samples = OSTREL_RESOURCE_DIR "/samples";
    const Json content = Json::parse(bytesOf(samples / "samples.json"));
    TemporaryFolder folder;
    auto server = startOn(folder.path(), samples);
    ASSERT_TRUE(server) << server.failure().text;
    const auto records = recordsOf(**server);
    ASSERT_EQ(records.size(), content["articles"].size());
    for (std::size_t at = 0; at < records.size(); ++at) {
        const Json &record = records[at], &article = content["articles"][at];
        EXPECT_EQ(record["auth_name"], article["author"]);
        EXPECT_EQ(record["title"], article["title"]);
        EXPECT_EQ(record["text"], joined(article["text"]));
        EXPECT_EQ(record["liked"], article.value("likes", 0));
        EXPECT_EQ(record["comment"], article.value("comments", Json::array()).size());
        EXPECT_EQ(record["open_comment"], article.value("openComment", true));
        if (at > 0) {
            EXPECT_GE(records[at - 1]["modifie_date"], record["modifie_date"]) << record["title"];
        }
        const auto check = [&](const char* kind, const char* file, const std::string& size) {
            const Json media = article.value(kind, Json::array());
            ASSERT_EQ(record[kind].size(), media.size());
            for (std::size_t number = 0; number < media.size(); ++number) {
                const Json& served = record[kind][number];
                const auto bytes = [&](const char* key) {
                    const auto url = served[key].get<std::string>();
                    return bytesOf(folder.path() / url.substr(url.find("media/")));
                };
                EXPECT_EQ(served["text"], media[number].value("text", ""));
                EXPECT_TRUE(bytes(file) == bytesOf(samples / media[number]["file"])) << media[number];
                const auto thumbnail = ServerPicture::decode(bytes("thumbnail"), 1280);
                ASSERT_TRUE(thumbnail) << media[number];
                EXPECT_EQ(thumbnail->width() > thumbnail->height(),
                          served[size + "_width"] > served[size + "_height"])
                    << media[number];
            }
        };
        check("images", "image", "image");
        check("videos", "video", "video");
    }
    const std::size_t files = filesIn(folder.path() / "media");
    for (int start = 0; start < 2; ++start) {
        ASSERT_EQ((*server)->sampleAccounts().size(), 2U);
        for (const SampleAccount& account : (*server)->sampleAccounts()) {
            httplib::Client client("127.0.0.1", (*server)->port());
            const auto signedIn = client.Post(
                "/account/sign_in", httplib::Params{{"name", account.name}, {"password", account.password}});
            ASSERT_TRUE(signedIn);
            EXPECT_EQ(signedIn->status, 200) << account.name;
            const auto cookie = signedIn->get_header_value("Set-Cookie");
            const auto messages =
                client.Get("/account/notifications", {{"Cookie", cookie.substr(0, cookie.find(';'))}});
            ASSERT_TRUE(messages);
            EXPECT_EQ(Json::parse(messages->body)["results"].size(),
                      std::count_if(content["messages"].begin(), content["messages"].end(),
                                    [&](const Json& message) { return message["to"] == account.name; }));
        }
        (*server).reset();
        server = startOn(folder.path(), samples);
        ASSERT_TRUE(server) << server.failure().text;
        EXPECT_EQ(recordsOf(**server).size(), records.size());
        EXPECT_EQ(filesIn(folder.path() / "media"), files);
    }
}

TEST(SampleContentTest, ABrokenFolderIsOneSentenceAndLeavesNothing) {
    TemporaryFolder samples, data;
    const auto write = [&](const char* name, const std::string& bytes) {
        std::ofstream(samples.path() / name, std::ios::binary | std::ios::trunc) << bytes;
    };
    const std::string picture = ServerPicture(60, 40).jpeg(80);
    const auto clip = bytesOf(OSTREL_SOURCE_DIR "/samples/clips/wheel.mp4");
    write("a.jpg", picture);
    write("a.mp4", clip);
    write("cut.jpg", picture.substr(0, picture.size() / 2));
    write("text.mp4", "no clip");
    const Json good = Json::parse(R"({
        "people": [{"name": "Ada", "password": "long enough", "portrait": "a.jpg"}, {"name": "Lin"}],
        "articles": [{"author": "Lin", "minutesAgo": 5, "title": "t", "text": ["a", "b"], "likes": 3,
            "images": [{"file": "a.jpg", "text": "c"}],
            "videos": [{"file": "a.mp4", "thumbnail": "a.jpg"}],
            "comments": [{"author": "Ada", "text": "c"}]}],
        "messages": [{"from": "Lin", "to": "Ada", "minutesAgo": 1, "title": "t", "text": "m"}]})");
    const Json::json_pointer article("/articles/0"), image("/articles/0/images/0/file"),
        still("/articles/0/videos/0/thumbnail"), video("/articles/0/videos/0/file");
    struct Case {
        std::function<void(Json&)> change;
        const char* part;
    };
    for (const Case& tried : {
             Case{[](Json& json) { json = Json::array(); }, "not an object"},
             Case{[](Json& json) { json.erase("people"); }, "\"Lin\", who is not in \"people\""},
             Case{[](Json& json) { json = Json::object(); }, "nobody in \"people\""},
             Case{[](Json& json) { json["people"][0]["password"] = "short"; }, "person 1 could not sign up"},
             Case{[](Json& json) { json["people"][1]["name"] = "\u202E"; }, "person 2 could not sign up"},
             Case{[](Json& json) {
                      json["people"].push_back({{"name", "ADA"}});
                  },
                  "The name is taken."},
             Case{[](Json& json) { json["articles"] = "none"; }, "\"articles\" that is not a list"},
             Case{[&](Json& json) { json[article].erase("title"); }, "article 1 has no text \"title\""},
             Case{[&](Json& json) { json[article]["text"] = "a"; }, "no list of lines \"text\""},
             Case{[&](Json& json) { json[article]["text"][1] = 1; }, "article 1 has no text \"text\""},
             Case{[&](Json& json) { json[article]["minutesAgo"] = -1; }, "no number \"minutesAgo\" from 0"},
             Case{[&](Json& json) { json[article]["likes"] = 2.5; }, "no number \"likes\""},
             Case{[&](Json& json) { json[article]["opencomment"] = true; }, "unknown key \"opencomment\""},
             Case{[&](Json& json) { json[article]["openComment"] = 1; }, "neither true nor false"},
             Case{[&](Json& json) { json[article]["comments"][0]["author"] = "X"; },
                  "comment 1 of article 1"},
             Case{[](Json& json) { json["messages"][0].erase("to"); }, "message 1 has no text \"to\""},
             Case{[&](Json& json) { json[image] = "none.jpg"; }, "none.jpg: No such file"},
             Case{[&](Json& json) { json[image] = "."; }, "Is a directory"},
             Case{[&](Json& json) { json[image] = "cut.jpg"; },
                  "cut.jpg was refused: The picture is broken."},
             Case{[&](Json& json) { json[image] = "a.mp4"; }, "a.mp4 was refused: The picture is not a JPEG"},
             Case{[&](Json& json) { json[video] = "text.mp4"; }, "text.mp4"},
             Case{[&](Json& json) { json[still] = "cut.jpg"; }, "cut.jpg was refused"},
             Case{[](Json& json) { json["people"][0]["portrait"] = "text.mp4"; }, "neither JPEG nor PNG"},
         }) {
        Json changed = good;
        tried.change(changed);
        write("samples.json", changed.dump());
        const auto server = startOn(data.path(), samples.path());
        ASSERT_FALSE(server) << tried.part;
        const std::string& text = server.failure().text;
        EXPECT_NE(text.find(tried.part), std::string::npos) << text << " for " << tried.part;
        EXPECT_NE(text.find(samples.path()), std::string::npos) << text;
        EXPECT_EQ(filesIn(data.path() / "media"), 0U) << tried.part;
    }
    for (const std::string& bytes :
         {std::string(), good.dump().substr(0, 300), std::string("{\"\xFF\": 1}")}) {
        write("samples.json", bytes);
        const auto server = startOn(data.path(), samples.path());
        ASSERT_FALSE(server);
        EXPECT_TRUE(server.failure().text.ends_with("samples.json is not JSON.")) << server.failure().text;
    }
    write("samples.json", good.dump());
    const auto server = startOn(data.path(), samples.path());
    ASSERT_TRUE(server) << server.failure().text;
    EXPECT_EQ(recordsOf(**server).size(), 1U);
    EXPECT_EQ(filesIn(data.path() / "media"), 5U);
}

}  // namespace articleserver
