#include "article/server/ArticleRequest.h"
#include "article/server/OstrelServerFramework.h"
#include "platform/foundation/runloop/SystemRunLoop.h"
#include "serverframework/HttpServerFramework.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {
namespace {

std::string hexadecimal(std::string_view bytes) {
    static constexpr char digits[] = "0123456789abcdef";
    std::string text;
    text.reserve(bytes.size() * 2);
    for (const char byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[static_cast<unsigned char>(byte) & 15];
    }
    return text;
}

using Texts = std::map<std::string, std::string>;

/// A request and what Django is to make of it.
struct Sent {
    ArticleRequest request;
    std::string method, path;
    Texts query, form, files;
};
Sent get(ArticleRequest request, const char* path, Texts query = {}) {
    return {std::move(request), "GET", path, std::move(query), {}, {}};
}
Sent post(ArticleRequest request, const char* path, Texts query, Texts form, Texts files = {}) {
    return {std::move(request), "POST", path, std::move(query), std::move(form), std::move(files)};
}

class DjangoTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        // Debian's interpreter, which has Debian's Django.
        django_ = std::make_unique<ChildProcess>(std::vector<std::string>{"/usr/bin/python3", OSTREL_DJANGO_SERVER});
        port_ = std::atoi(django_->line(60'000).c_str());
    }
    static void TearDownTestSuite() { django_.reset(); }

    void SetUp() override {
        ASSERT_GT(port_, 0) << "Django did not start; python3-django is in scripts/packages.txt";
        RunLoop::installMain(loop_);
        HttpServerFramework::Options options;
        options.baseAddress = "http://127.0.0.1:" + std::to_string(port_) + "/";
        options.mediaCacheFolder = "";
        framework_ = HttpServerFramework::create(options);
        OstrelServerFramework::install(framework_);
    }
    void TearDown() override {
        OstrelServerFramework::install(nullptr);
        framework_.reset();
        while (loop_->runTurn()) {}
        RunLoop::installMain(nullptr);
    }

    /// Compares without printing: the texts are long.
    static void expectSame(const Dictionary& decoded, const char* key, const Texts& sent) {
        const Dictionary values(decoded[key]);
        EXPECT_EQ(decoded[key].keys().size(), sent.size()) << key;
        for (const auto& [name, text] : sent)
            EXPECT_TRUE(values[name].string() == hexadecimal(text)) << key << " " << name << ", " << text.size();
    }

    /// Sends all of them at once, as a save does, and looks at each as it arrived.
    void exchange(const std::vector<Sent>& all) {
        std::size_t answered = 0;
        for (const Sent& sent : all) {
            sent.request.send([&](const ArticleAnswer& answer) {
                ++answered;
                SCOPED_TRACE(sent.path);
                EXPECT_FALSE(answer.error) << answer.error.value_or("");
                EXPECT_NE(answer.verdict, ArticleAnswer::Verdict::failed);
                const Dictionary decoded = Dictionary::parse(answer.text.value_or(""));
                EXPECT_EQ(decoded["method"].string(), sent.method);
                EXPECT_EQ(decoded["path"].string(), sent.path);
                expectSame(decoded, "query", sent.query);
                expectSame(decoded, "form", sent.form);
                expectSame(decoded, "files", sent.files);
                for (const auto& [name, bytes] : sent.files)
                    EXPECT_EQ(Dictionary(decoded["file_names"])[name].string(), name);
            });
        }
        EXPECT_TRUE(loop_->run([&] { return answered == all.size(); }, 120)) << answered << " answers";
    }

    static inline std::unique_ptr<ChildProcess> django_;
    static inline int port_ = 0;
    std::shared_ptr<SystemRunLoop> loop_ = std::make_shared<SystemRunLoop>();
    std::shared_ptr<HttpServerFramework> framework_;
};

constexpr char updatePath[] = "/article/update_article_json.html";
constexpr char imagePath[] = "/article/image_update";
constexpr char videoPath[] = "/article/video_update";

TEST_F(DjangoTest, everyRequestArrivesAsItWasMeant) {
    TemporaryFolder folder;
    std::string everyByte;
    for (int i = 0; i < 70'000; ++i) everyByte += static_cast<char>(i * 7 % 256);
    const std::string clip = folder.write("IMG 1.mp4", everyByte + everyByte);
    const Value id = Dictionary::parse(R"({"id":42})")["id"];
    std::vector<std::string> texts = {
        "",
        " &=+%#;'\"\\ /?:@[]{}|^`~$,!*()<> ",
        "%41+%2B&amp;\\u0041\\n",
        "\r \n \r\n \n\r \r\r\n",
        "\r\n--------------------------\r\nContent-Disposition: form-data; name=\"title\"\r\n\r\nx",
        "\U0001F469\u200D\U0001F4BB \U0001F1E8\U0001F1F3 e\u0301\u0323 \u05D0\u05D1 "
        "\u202E\u0627\u0644\u0639\u202C",
        "\uFEFF\uFFFE\uFFFF\U0010FFFF",
    };
    std::string controls;
    for (char c = 1; c < 0x20; ++c) controls += c;
    texts.push_back(controls + "\x7F");
    // The beginning of the long text, where it is cut for captions, is ASCII.
    constexpr std::size_t captionBytes = 300'000;
    std::string longText(captionBytes, '%');
    while (longText.size() < 1'000'000) longText += texts[longText.size() % texts.size()] + "你好, world\r\n";
    texts.push_back(longText);

    std::vector<Sent> all = {
        get(ArticleRequest::listArticles(), "/article/articles_json.html"),
        get(ArticleRequest::listOwnArticles(), "/article/my_articles_json.html"),
        get(ArticleRequest::nextPage("/article/articles_json.html?before=7"), "/article/articles_json.html",
            {{"before", "7"}}),
        get(ArticleRequest::removeArticle(id), "/article/remove", {{"id", "42"}}),
        get(ArticleRequest::likeArticle(id), "/article/like_article_json.html", {{"id", "42"}}),
        get(ArticleRequest::loadArticle("42", ArticleRequest::LoadPurpose::afterSaving),
            "/article/article_42_json.html"),
        get(ArticleRequest::setImagePosition(id, 3), imagePath, {{"id", "42"}, {"value", "3"}}),
        get(ArticleRequest::removeImage(id), "/article/image_remove", {{"id", "42"}}),
        get(ArticleRequest::setVideoPosition(id, 0), videoPath, {{"id", "42"}, {"value", "0"}}),
        get(ArticleRequest::removeVideo(id), "/article/video_remove", {{"id", "42"}}),
    };
    for (const std::string& text : texts) {
        const Texts query{{"article_id", "42"}, {"value", "5"}};
        Texts imageForm, videoForm{{"altitude", "+012.345"}, {"duration", "13"}};
        if (!text.empty()) imageForm["text"] = videoForm["text"] = text;
        // Captions stand in the address, whose length has a bound.
        const std::string caption = text.substr(0, std::min<std::size_t>(text.size(), captionBytes));
        ArticleVideoFields fields;
        fields.text = text;
        fields.altitude = "+012.345";
        fields.duration = 12.6f;
        all.insert(
            all.end(),
            {post(ArticleRequest::addComment("42", text), "/article/json_add_comment.html", {{"id", "42"}},
                  {{"text", text}}),
             post(ArticleRequest::createArticle(text, text + "."), updatePath, {},
                  {{"title", text}, {"text", text + "."}}),
             post(ArticleRequest::updateArticle(id, text, ""), updatePath, {{"id", "42"}},
                  {{"title", text}, {"text", ""}}),
             get(ArticleRequest::setImageCaption(id, caption), imagePath, {{"id", "42"}, {"text", caption}}),
             get(ArticleRequest::setVideoCaption(id, caption), videoPath, {{"id", "42"}, {"text", caption}}),
             post(ArticleRequest::uploadImage("42", 5,
                                              UploadFile::madeBy([everyByte] { return Data::copy(everyByte); }), text),
                  imagePath, query, imageForm, {{"image.jpg", everyByte}}),
             post(ArticleRequest::uploadVideo("42", 5, Data::copy("still"), UploadFile::atPath(clip), fields),
                  videoPath, query, videoForm, {{"thumbnail.jpg", "still"}, {"video.mp4", everyByte + everyByte}})});
    }
    exchange(all);

    std::optional<std::string> error;
    ArticleRequest::setImageCaption(id, longText).send([&](const ArticleAnswer& answer) { error = answer.error; });
    EXPECT_TRUE(loop_->run([&] { return error.has_value(); }, 20));
    EXPECT_EQ(error, "The address of the request is too long.");
}

}  // namespace
}  // namespace ostrel
