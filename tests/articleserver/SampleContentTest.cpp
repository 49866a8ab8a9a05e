#include "tests/articleserver/ServerFixture.h"

#include "articleserver/media/ServerPicture.h"

#include <chrono>
#include <set>
#include <thread>

namespace articleserver {

namespace {

/// One sample server for all tests: filling takes a second.
class SampleContentTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        folder_ = std::make_unique<TemporaryFolder>();
        start(true);
        nlohmann::json page;
        std::string path = "/article/articles_json.html";
        for (int pages = 0; !path.empty() && pages < 10; ++pages) {
            page = get(path);
            for (const auto& record : page["results"]) records_.push_back(record);
            path = page["more"].is_null() ? "" : page["more"].get<std::string>();
        }
    }

    static void TearDownTestSuite() {
        server_.reset();
        folder_.reset();
        records_.clear();
    }

    static void start(bool sample) {
        server_.reset();
        ArticleServerOptions options;
        options.dataFolder = folder_->path();
        options.sample = sample;
        auto started = ArticleServer::start(options);
        ASSERT_TRUE(started) << started.failure().text;
        server_ = std::move(*started);
    }

    static nlohmann::json get(const std::string& path) {
        httplib::Client client("127.0.0.1", server_->port());
        auto result = client.Get(path);
        return result ? nlohmann::json::parse(result->body, nullptr, false) : nlohmann::json();
    }

    template <typename Test>
    static std::ptrdiff_t count(Test test) {
        return std::count_if(records_.begin(), records_.end(), test);
    }

    static std::unique_ptr<TemporaryFolder> folder_;
    static std::unique_ptr<ArticleServer> server_;
    static std::vector<nlohmann::json> records_;
};

std::unique_ptr<TemporaryFolder> SampleContentTest::folder_;
std::unique_ptr<ArticleServer> SampleContentTest::server_;
std::vector<nlohmann::json> SampleContentTest::records_;

}  // namespace

TEST_F(SampleContentTest, IsAsVariedAsTheScreensNeed) {
    using Record = const nlohmann::json&;
    auto text = [](Record record) { return record["text"].get<std::string>(); };
    EXPECT_GE(records_.size(), 55U);
    EXPECT_LE(records_.size(), 70U);
    EXPECT_GE(count([](Record record) { return record["title"] == ""; }), 3);
    EXPECT_GE(count([&](Record record) { return text(record).empty(); }), 1);
    EXPECT_GE(count([&](Record record) { return text(record).size() > 3000; }), 2);
    EXPECT_GE(count([&](Record record) { return text(record).find("\r\n") != std::string::npos; }), 2);
    EXPECT_GE(count([](Record record) { return record["open_comment"] == false; }), 4);
    EXPECT_GE(count([](Record record) { return record["comment"] == 0; }), 5);
    EXPECT_GE(count([](Record record) { return record["comment"] >= 3; }), 10);
    EXPECT_GE(count([](Record record) { return record["images"].size() >= 3; }), 3);
    EXPECT_GE(count([](Record record) { return record["images"].empty(); }), 15);
    EXPECT_GE(count([](Record record) { return record["auth_name"] == "Ada Fern"; }), 6);
    std::set<std::string> authors;
    std::set<std::string> dates;
    for (Record record : records_) {
        authors.insert(record["auth_name"]);
        dates.insert(record["modifie_date"]);
    }
    EXPECT_EQ(authors.size(), 8U);
    EXPECT_GE(dates.size(), records_.size() - 2);
    // Newest first by date as well as by id.
    EXPECT_TRUE(std::is_sorted(records_.begin(), records_.end(), [](Record left, Record right) {
        return left["modifie_date"] > right["modifie_date"];
    }));
}

TEST_F(SampleContentTest, PicturesHaveTheSizesTheirRecordsTell) {
    httplib::Client client("127.0.0.1", server_->port());
    client.set_keep_alive(true);
    std::set<bool> orientations;
    for (const auto& record : records_) {
        for (const auto& image : record["images"]) {
            auto load = [&](const char* key) {
                std::string url = image[key];
                auto result = client.Get(url.substr(server_->url().size()));
                return ServerPicture::decode(result ? result->body : "", 4096);
            };
            auto picture = load("image");
            auto thumbnail = load("thumbnail");
            ASSERT_TRUE(picture && thumbnail) << image;
            EXPECT_EQ(picture->width(), image["image_width"]);
            EXPECT_EQ(picture->height(), image["image_height"]);
            EXPECT_EQ(std::max(thumbnail->width(), thumbnail->height()),
                      std::min(400, std::max(picture->width(), picture->height())));
            EXPECT_EQ(thumbnail->width() > thumbnail->height(), picture->width() > picture->height());
            orientations.insert(picture->width() > picture->height());
        }
    }
    EXPECT_EQ(orientations.size(), 2U);
}

TEST(SampleGalleryTest, PicturesThatAStopLeftUnpaintedAreThereAfterTheNextStart) {
    TemporaryFolder folder;
    std::vector<std::string> paths;
    auto start = [&](bool sample) {
        ArticleServerOptions options;
        options.dataFolder = folder.path();
        options.sample = sample;
        auto started = ArticleServer::start(options);
        EXPECT_TRUE(started);
        return std::move(*started);
    };
    auto get = [](ArticleServer& server, const std::string& path) {
        httplib::Client client("127.0.0.1", server.port());
        auto result = client.Get(path);
        return result && result->status == 200 ? result->body : std::string();
    };
    auto list = folder.path() / "sample-pictures";
    {
        auto server = start(true);
        auto page = nlohmann::json::parse(get(*server, "/article/articles_json.html"));
        for (const auto& record : page["results"]) {
            for (const auto& image : record["images"]) {
                for (const char* key : {"image", "thumbnail"})
                    paths.push_back(image[key].get<std::string>().substr(server->url().size()));
            }
        }
        ASSERT_GE(paths.size(), 20U);
        EXPECT_TRUE(std::filesystem::exists(list)) << "it cannot have painted all of them already";
        EXPECT_GT(get(*server, paths.back()).size(), 1000U)
            << "a picture that is asked for is painted at once";
    }
    ASSERT_TRUE(std::filesystem::exists(list));
    std::filesystem::remove(folder.path() / paths[0].substr(1));
    auto server = start(false);
    for (const std::string& path : paths) EXPECT_GT(get(*server, path).size(), 1000U) << path;
    for (int wait = 0; wait < 600 && std::filesystem::exists(list); ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    EXPECT_FALSE(std::filesystem::exists(list));
    EXPECT_EQ(get(*server, "/media/" + std::string(32, 'a') + ".jpg"), "");
}

TEST_F(SampleContentTest, ClipsAreFilmsWithStillsOfTheirSize) {
    httplib::Client client("127.0.0.1", server_->port());
    client.set_keep_alive(true);
    std::set<std::pair<int, int>> sizes;
    int articlesWithSeveral = 0;
    for (const auto& record : records_) {
        articlesWithSeveral += record["videos"].size() > 1;
        for (const auto& video : record["videos"]) {
            auto load = [&](const char* key, const char* type) {
                auto result = client.Get(video[key].get<std::string>().substr(server_->url().size()));
                EXPECT_EQ(result ? result->get_header_value("Content-Type") : "", type);
                return result ? result->body : std::string();
            };
            std::string film = load("video", "video/mp4");
            EXPECT_EQ(film.substr(4, 4), "ftyp");
            EXPECT_LT(film.find("moov"), film.find("mdat"))
                << "it could not be played before all of it has come";
            EXPECT_NE(film.find("mp4a"), std::string::npos) << "it has sound";
            auto still = ServerPicture::decode(load("thumbnail", "image/jpeg"), 4096);
            ASSERT_TRUE(still) << video;
            EXPECT_EQ(still->width(), video["video_width"]);
            EXPECT_EQ(still->height(), video["video_height"]);
            EXPECT_GT(video["duration"], 1);
            sizes.emplace(video["video_width"], video["video_height"]);
        }
    }
    EXPECT_EQ(sizes.size(), 3U) << "landscape, portrait, square";
    EXPECT_GE(articlesWithSeveral, 2);
}

TEST_F(SampleContentTest, AFirstReaderFindsMessages) {
    httplib::Client client("127.0.0.1", server_->port());
    const SampleAccount& account = server_->sampleAccounts().front();
    auto signedIn = client.Post("/account/sign_in",
                                httplib::Params{{"name", account.name}, {"password", account.password}});
    ASSERT_TRUE(signedIn);
    std::string cookie = signedIn->get_header_value("Set-Cookie");
    auto list = client.Get("/account/notifications", {{"Cookie", cookie.substr(0, cookie.find(';'))}});
    ASSERT_TRUE(list);
    auto messages = nlohmann::json::parse(list->body);
    EXPECT_GE(messages["results"].size(), 3U);
    EXPECT_LT(std::stoi(messages["result"].get<std::string>()), static_cast<int>(messages["results"].size()));
}

TEST_F(SampleContentTest, BothAccountsOpenAndASecondFillingChangesNothing) {
    ASSERT_EQ(server_->sampleAccounts().size(), 2U);
    for (const SampleAccount& account : server_->sampleAccounts()) {
        httplib::Client client("127.0.0.1", server_->port());
        auto result = client.Post("/account/sign_in",
                                  httplib::Params{{"name", account.name}, {"password", account.password}});
        ASSERT_TRUE(result);
        EXPECT_EQ(result->status, 200) << account.name;
    }
    start(true);
    EXPECT_EQ(get("/article/articles_json.html")["results"][0]["id"], records_.front()["id"]);
    EXPECT_EQ(server_->sampleAccounts().size(), 2U);
}

}  // namespace articleserver
