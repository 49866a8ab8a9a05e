#include "tests/articleserver/ServerFixture.h"

#include "articleserver/media/ServerPicture.h"

#include <algorithm>
#include <functional>
#include <random>
#include <thread>
#include <vector>

namespace articleserver {
namespace {

std::string jpegOf(int width, int height, int orientation = 1) {
    return withOrientation(ServerPicture(width, height).jpeg(80), orientation);
}

/// Four seconds, portrait by the matrix of its track: 360 by 640 pixels.
std::string clip() { return bytesOf(OSTREL_SOURCE_DIR "/samples/clips/rain.mp4"); }

std::string encoded(const std::string& text) { return httplib::detail::encode_query_param(text); }

class PublishTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        ada_ = signUp("Ada");
    }

    Answer uploadImage(std::int64_t article, int position, const std::string& jpeg, const std::string& text = {}) {
        return upload(imagePath(article, position),
                      {{"text", text, "", ""}, {"image.jpg", jpeg, "image.jpg", "image/jpeg"}}, ada_);
    }
    static std::string imagePath(std::int64_t article, int position, const char* kind = "image") {
        return std::string("/article/") + kind + "_update?article_id=" + std::to_string(article) +
               "&value=" + std::to_string(position);
    }
    static std::string videoPath(std::int64_t article, int position) { return imagePath(article, position, "video"); }
    static httplib::MultipartFormDataItems videoParts(const std::string& mp4, const std::string& still,
                                                      const std::string& duration = "13") {
        return {{"duration", duration, "", ""},
                {"altitude", "+012.345", "", ""},
                {"thumbnail.jpg", still, "thumbnail.jpg", "image/jpeg"},
                {"video.mp4", mp4, "video.mp4", "video/mp4"}};
    }

    std::int64_t create(const std::string& title = "T", const std::string& text = "t") {
        const Answer answer = post("/article/update_article_json.html", {{"title", title}, {"text", text}}, ada_);
        EXPECT_EQ(answer.status, 200) << answer.body;
        return answer.json.value("id", std::int64_t{0});
    }
    nlohmann::json load(std::int64_t article) {
        return get("/article/article_" + std::to_string(article) + "_json.html").json;
    }
    std::vector<std::string> captions(std::int64_t article, const char* media) {
        std::vector<std::string> texts;
        const nlohmann::json loaded = load(article);
        for (const auto& record : loaded[media]) texts.push_back(record["text"]);
        return texts;
    }
    std::string fetched(const std::string& url) { return get(url.substr(url.find("/media/"))).body; }

    std::string ada_;
};

TEST_F(PublishTest, AnArticleGoesThroughItsLife) {
    const std::string title = "标题 \r \U0001F600 <&>", text = "a\r\nb\rc\nאב e\u0301";
    const auto id = create(title, text);
    auto record = load(id);
    EXPECT_EQ(record["title"], title);
    EXPECT_EQ(record["text"], text);

    const std::string picture = jpegOf(1300, 900, 6);
    const Answer image = uploadImage(id, 0, picture, "吗 & \"1\"\r\n");
    ASSERT_EQ(image.status, 200) << image.body;
    const Answer video = upload(videoPath(id, 0), videoParts(clip(), jpegOf(500, 900)), ada_);
    ASSERT_EQ(video.status, 200) << video.body;
    record = load(id);
    EXPECT_EQ(record["images"][0], image.json);
    EXPECT_EQ(record["videos"][0], video.json);
    EXPECT_EQ(image.json["text"], "吗 & \"1\"\r\n");
    EXPECT_EQ(image.json["image_width"], 900) << "upright";
    EXPECT_EQ(image.json["image_height"], 1300);
    EXPECT_EQ(fetched(image.json["image"]), picture);
    const auto small = ServerPicture::decode(fetched(image.json["thumbnail"]), 400);
    ASSERT_TRUE(small);
    EXPECT_EQ(small->height(), 400);
    EXPECT_EQ(small->width(), 277);
    EXPECT_EQ(video.json["video_width"], 360) << "its frames are stored in landscape orientation";
    EXPECT_EQ(video.json["video_height"], 640);
    EXPECT_EQ(video.json["duration"], 13);
    EXPECT_EQ(fetched(video.json["video"]), clip());

    now_ = startTime + 5000;
    std::string caption(60'000, 'x');
    caption += " &=+%#;'\"\\ 你好 \U0001F469\u200D\U0001F4BB \r\n\u0001";
    const std::string imageId = image.json["id"].dump(), videoId = video.json["id"].dump();
    for (const std::string& path :
         {"article/image_update?id=" + imageId + "&text=" + encoded(caption),
          "article/image_update?id=" + imageId + "&value=7",
          "article/video_update?id=" + videoId + "&text=", "article/video_update?id=" + videoId + "&value=2"}) {
        const Answer answer = get("/" + path, ada_);
        EXPECT_EQ(answer.status, 200) << answer.body;
    }
    EXPECT_EQ(captions(id, "images").at(0), caption);
    EXPECT_EQ(load(id)["modifie_date"], "2026-11-21T02:32:43.123Z");
    EXPECT_EQ(post("/article/update_article_json.html?id=" + std::to_string(id),
                   {{"title", ""}, {"text", std::string(1024 * 1024, 'y')}}, ada_)
                  .status,
              200);
    EXPECT_EQ(load(id)["text"], std::string(1024 * 1024, 'y'));

    EXPECT_EQ(mediaCount(), 4u);
    EXPECT_EQ(get("/article/image_remove?id=" + imageId, ada_).status, 200);
    EXPECT_EQ(get("/article/image_remove?id=" + imageId, ada_).status, 404);
    EXPECT_EQ(mediaCount(), 2u);
    EXPECT_EQ(get("/article/video_remove?id=" + videoId, ada_).status, 200);
    EXPECT_EQ(mediaCount(), 0u);
    ASSERT_EQ(uploadImage(id, 0, picture).status, 200);
    EXPECT_EQ(get("/article/remove?id=" + std::to_string(id), ada_).status, 200);
    EXPECT_EQ(get("/article/remove?id=" + std::to_string(id), ada_).status, 404);
    EXPECT_EQ(mediaCount(), 0u);
    EXPECT_GT(create(), id) << "an id is not given again";
}

TEST_F(PublishTest, EverythingIsRefusedThatIsNotTheAuthorsOrNotWhole) {
    const auto id = create();
    const std::string picture = jpegOf(64, 64);
    const auto imageId = uploadImage(id, 0, picture).json["id"].dump();
    const auto videoId = upload(videoPath(id, 0), videoParts(clip(), picture), ada_).json["id"].dump();
    const auto before = load(id);
    const std::string bob = signUp("Bob");
    const std::string article = std::to_string(id);

    const auto image = [](const std::string& bytes) -> httplib::MultipartFormDataItems {
        return {{"image.jpg", bytes, "image.jpg", "image/jpeg"}};
    };
    const auto sent = [&](const std::string& path, const httplib::MultipartFormDataItems& parts) {
        return upload(path, parts, ada_).status;
    };
    const auto asked = [&](const std::string& path) { return get(path, ada_).status; };
    const auto written = [&](const std::string& query, const httplib::Params& form) {
        return post("/article/update_article_json.html" + query, form, ada_).status;
    };
    const std::string cutClip = clip().substr(0, clip().size() - 1000);
    const std::vector<std::pair<int, int>> refusals = {
        {sent(imagePath(id, 1), image("GIF89a")), 415},
        {sent(imagePath(id, 1), image(ServerPicture(9, 9).png())), 415},
        {sent(imagePath(id, 1), image("")), 415},
        {sent(imagePath(id, 1), image(jpegOf(800, 800).substr(0, 3000))), 400},
        {sent(imagePath(id, 1), {{"../../image.jpg", picture, "image.jpg", ""}}), 400},
        {sent(imagePath(id, 1), {{"image.jpg", picture, "", ""}}), 400},
        {sent(imagePath(id, 1), {{"text", "no picture", "", ""}}), 400},
        {sent(imagePath(id, 1), {image(picture)[0], image(picture)[0]}), 400},
        {sent(imagePath(id, 1), {{"text", "\xFF", "", ""}, image(picture)[0]}), 400},
        {sent(imagePath(id, 1), {{"text", std::string(65'537, 'x'), "", ""}, image(picture)[0]}), 413},
        {sent(imagePath(id, 1), {{"text", std::string(300'000, 'x'), "", ""}, image(picture)[0]}), 413},
        {sent(imagePath(id, 1), image(picture + std::string(64 * 1024 * 1024, '\0'))), 413},
        {sent(imagePath(id + 1, 1), image(picture)), 404},
        {sent("/article/image_update?article_id=" + article, image(picture)), 400},
        {sent("/article/image_update?article_id=" + article + "&value=-1", image(picture)), 400},
        {sent("/article/image_update?id=" + imageId, image(picture)), 400},
        {sent(videoPath(id, 1), videoParts(cutClip, picture)), 400},
        {sent(videoPath(id, 1), videoParts(picture, picture)), 415},
        {sent(videoPath(id, 1), videoParts(clip(), clip())), 415},
        {sent(videoPath(id, 1), videoParts(clip(), picture, "soon")), 400},
        {asked("/article/image_update?id=" + imageId), 400},
        {asked("/article/image_update?text=t"), 400},
        {asked("/article/remove"), 400},
        {get("/article/remove?id=" + article, ada_, {{"Sec-Fetch-Site", "cross-site"}}).status, 403},
        {httplib::Client("127.0.0.1", server_->port())
             .Head("/article/remove?id=" + article, {{"Cookie", ada_}})
             ->status,
         405},
        {asked("/article/remove?id=99999"), 404},
        {asked("/article/video_update?id=99999&text=t"), 404},
        {asked("/article/video_update?id=" + videoId + "&value=1e3"), 400},
        {asked("/article/image_update?id=" + imageId + "&text=" + std::string(65'537, 'x')), 413},
        {asked("/article/image_update?id=" + imageId + "&text=" + std::string(250'000, 'x')), 414},
        {written("", {{"title", "t"}}), 400},
        {written("", {{"title", std::string(1'048'577, 'x')}, {"text", ""}}), 413},
        {written("?id=99999", {{"title", "t"}, {"text", "t"}}), 404}};
    for (std::size_t index = 0; index < refusals.size(); ++index)
        EXPECT_EQ(refusals[index].first, refusals[index].second) << "refusal " << index;

    for (const auto& [cookies, status] :
         {std::pair(std::string(), 401), std::pair("ostrel_session=" + std::string(43, 'A'), 401),
          std::pair(bob, 403)}) {
        EXPECT_EQ(upload(imagePath(id, 1), image(picture), cookies).status, status);
        EXPECT_EQ(upload(videoPath(id, 1), videoParts(clip(), picture), cookies).status, status);
        for (const std::string& path :
             {"image_update?id=" + imageId + "&text=t", "image_update?id=" + imageId + "&value=1",
              "image_remove?id=" + imageId, "video_update?id=" + videoId + "&text=t",
              "video_update?id=" + videoId + "&value=1", "video_remove?id=" + videoId, "remove?id=" + article}) {
            EXPECT_EQ(get("/article/" + path, cookies).status, status) << path;
        }
        EXPECT_EQ(
            post("/article/update_article_json.html?id=" + article, {{"title", "t"}, {"text", "t"}}, cookies).status,
            status);
    }
    EXPECT_EQ(post("/article/update_article_json.html", {{"title", "t"}, {"text", "t"}}).status, 401);
    EXPECT_EQ(load(id), before);
    EXPECT_EQ(mediaCount(), 4u) << "nothing of what was refused is left";
}

TEST_F(PublishTest, AnUploadThatBreaksOffLeavesNothing) {
    const auto id = create();
    const std::string head = "--b\r\nContent-Disposition: form-data; name=\"image.jpg\"; filename=\"a\"\r\n\r\n";
    httplib::Client client("127.0.0.1", server_->port());
    bool wasThere = false;
    const auto provide = [&](std::size_t offset, std::size_t, httplib::DataSink& sink) {
        if (offset == 0) return sink.write(head.data(), head.size());
        for (int wait = 0; wait < 500 && !wasThere; ++wait) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            wasThere = mediaCount() == 1;
        }
        return false;
    };
    EXPECT_FALSE(
        client.Post(imagePath(id, 0), {{"Cookie", ada_}}, 1'000'000, provide, "multipart/form-data; boundary=b"));
    EXPECT_TRUE(wasThere);
    client.stop();
    for (int wait = 0; wait < 500 && mediaCount() > 0; ++wait)
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    EXPECT_EQ(mediaCount(), 0u);
    EXPECT_TRUE(load(id)["images"].empty());
}

TEST_F(PublishTest, TheOrderIsTheEditorsInWhateverOrderRequestsArrive) {
    const auto id = create();
    constexpr int existing = 4, added = 8;
    std::vector<std::string> ids;
    for (int i = 0; i < existing; ++i)
        ids.push_back(uploadImage(id, i, jpegOf(40, 30), "old " + std::to_string(i)).json["id"].dump());

    // The old ones in reverse, a new one before and after each.
    std::vector<std::string> wanted;
    std::vector<std::function<int()>> requests;
    for (int position = 0; position < existing + added; ++position) {
        if (position % 3 == 1) {
            const int old = existing - 1 - position / 3;
            wanted.push_back("old " + std::to_string(old));
            requests.emplace_back([this, position, &imageId = ids[static_cast<std::size_t>(old)]] {
                return get("/article/image_update?id=" + imageId + "&value=" + std::to_string(position), ada_).status;
            });
        } else {
            wanted.push_back("new " + std::to_string(position));
            requests.emplace_back([this, id, position] {
                return uploadImage(id, position, jpegOf(40, 30), "new " + std::to_string(position)).status;
            });
        }
    }
    std::shuffle(requests.begin(), requests.end(), std::mt19937(7));
    std::vector<std::thread> threads;
    for (const auto& request : requests) threads.emplace_back([&request] { EXPECT_EQ(request(), 200); });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(captions(id, "images"), wanted);
}

TEST_F(PublishTest, ARequestThatComesTwiceIsDoneOnce) {
    const auto id = create();
    const httplib::MultipartFormDataItems parts = {{"image.jpg", jpegOf(40, 30), "image.jpg", ""}};
    const Answer first = upload(imagePath(id, 0), parts, ada_, {{"Idempotency-Key", "\"k\""}});
    const Answer second = upload(imagePath(id, 0), parts, ada_, {{"Idempotency-Key", "\"k\""}});
    EXPECT_EQ(second.status, 200) << second.body;
    EXPECT_EQ(second.json["id"], first.json["id"]);
    EXPECT_EQ(load(id)["images"].size(), 1u);
    EXPECT_EQ(mediaCount(), 2u);
    EXPECT_EQ(upload(imagePath(id, 0), parts, ada_, {{"Idempotency-Key", "\"l\""}}).status, 200);
    EXPECT_EQ(load(id)["images"].size(), 2u) << "the same picture twice is what somebody may want";
}

TEST_F(PublishTest, APageEndsBeforeItGrowsTooLarge) {
    for (int i = 0; i < 5; ++i) create(std::to_string(i), std::string(900'000, 'x'));
    const Answer page = get("/article/articles_json.html");
    EXPECT_EQ(page.json["results"].size(), 3u);
    const Answer rest = get(page.json["more"]);
    ASSERT_EQ(rest.json["results"].size(), 2u);
    EXPECT_EQ(rest.json["results"][0]["title"], "1");
}

}  // namespace
}  // namespace articleserver
