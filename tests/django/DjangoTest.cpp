#include "article/server/ArticleRequest.h"
#include "article/server/OstrelServerFramework.h"
#include "platform/foundation/runloop/SystemRunLoop.h"
#include "serverframework/HttpServerFramework.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <poll.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

extern char** environ;

namespace ostrel {
namespace {

/// The Django application, in a process that ends with this object.
class DjangoServer final {
public:
    DjangoServer() {
        int in[2], out[2];
        if (::pipe2(in, O_CLOEXEC) != 0 || ::pipe2(out, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, in[0], 0);
        posix_spawn_file_actions_adddup2(&actions, out[1], 1);
        // Debian's interpreter, which has Debian's Django.
        std::string python = "/usr/bin/python3", script = OSTREL_DJANGO_SERVER;
        char* arguments[] = {python.data(), script.data(), nullptr};
        if (::posix_spawn(&child_, python.c_str(), &actions, nullptr, arguments, environ) != 0) child_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(in[0]);
        ::close(out[1]);
        input_ = in[1];
        constexpr int startMilliseconds = 60'000;
        std::string line;
        char byte = 0;
        pollfd watched{out[0], POLLIN, 0};
        while (::poll(&watched, 1, startMilliseconds) > 0 && ::read(out[0], &byte, 1) == 1 && byte != '\n')
            line += byte;
        ::close(out[0]);
        port_ = std::atoi(line.c_str());
    }
    DjangoServer(const DjangoServer&) = delete;
    DjangoServer& operator=(const DjangoServer&) = delete;
    ~DjangoServer() {
        ::close(input_);
        if (child_ <= 0) return;
        ::kill(child_, SIGKILL);
        ::waitpid(child_, nullptr, 0);
    }
    int port() const { return port_; }

private:
    pid_t child_ = -1;
    int input_ = -1;
    int port_ = 0;
};

std::string utf8(char32_t c) {
    const auto tail = [&](int shift) { return static_cast<char>(0x80 | ((c >> shift) & 0x3F)); };
    if (c < 0x80) return {static_cast<char>(c)};
    if (c < 0x800) return {static_cast<char>(0xC0 | (c >> 6)), tail(0)};
    if (c < 0x10000) return {static_cast<char>(0xE0 | (c >> 12)), tail(6), tail(0)};
    return {static_cast<char>(0xF0 | (c >> 18)), tail(12), tail(6), tail(0)};
}

/// Every character of a plane but NUL and the surrogates, which are none.
std::string plane(char32_t number) {
    std::string text;
    for (char32_t c = number << 16; c < (number + 1) << 16; ++c) {
        if (c != 0 && (c < 0xD800 || c > 0xDFFF)) text += utf8(c);
    }
    return text;
}

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
    Texts query = {}, form = {}, files = {};
};

class DjangoTest : public testing::Test {
protected:
    static void SetUpTestSuite() { django_ = std::make_unique<DjangoServer>(); }
    static void TearDownTestSuite() { django_.reset(); }

    void SetUp() override {
        ASSERT_GT(django_->port(), 0) << "Django did not start; python3-django is in scripts/packages.txt";
        RunLoop::installMain(loop_);
        HttpServerFramework::Options options;
        options.baseAddress = "http://127.0.0.1:" + std::to_string(django_->port()) + "/";
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
            EXPECT_TRUE(values[name].string() == hexadecimal(text))
                << key << " " << name << ", " << text.size();
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

    static std::unique_ptr<DjangoServer> django_;
    std::shared_ptr<SystemRunLoop> loop_ = std::make_shared<SystemRunLoop>();
    std::shared_ptr<HttpServerFramework> framework_;
};

std::unique_ptr<DjangoServer> DjangoTest::django_;

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
    std::string long1;
    // Its beginning, where it is cut for captions, is ASCII.
    constexpr std::size_t captionBytes = 300'000;
    long1 = std::string(captionBytes, '%');
    while (long1.size() < 1'000'000) long1 += texts[long1.size() % texts.size()] + "你好, world\r\n";
    texts.push_back(long1);

    std::vector<Sent> all = {
        {ArticleRequest::listArticles(), "GET", "/article/articles_json.html"},
        {ArticleRequest::listOwnArticles(), "GET", "/article/my_articles_json.html"},
        {ArticleRequest::nextPage("/article/articles_json.html?before=7"),
         "GET",
         "/article/articles_json.html",
         {{"before", "7"}}},
        {ArticleRequest::removeArticle(id), "GET", "/article/remove", {{"id", "42"}}},
        {ArticleRequest::likeArticle(id), "GET", "/article/like_article_json.html", {{"id", "42"}}},
        {ArticleRequest::loadArticle("42", ArticleRequest::LoadPurpose::afterSaving), "GET",
         "/article/article_42_json.html"},
        {ArticleRequest::setImagePosition(id, 3),
         "GET",
         "/article/image_update",
         {{"id", "42"}, {"value", "3"}}},
        {ArticleRequest::removeImage(id), "GET", "/article/image_remove", {{"id", "42"}}},
        {ArticleRequest::setVideoPosition(id, 0),
         "GET",
         "/article/video_update",
         {{"id", "42"}, {"value", "0"}}},
        {ArticleRequest::removeVideo(id), "GET", "/article/video_remove", {{"id", "42"}}},
    };
    for (const std::string& text : texts) {
        const Texts query{{"article_id", "42"}, {"value", "5"}};
        Texts imageForm, videoForm{{"altitude", "+012.345"}, {"duration", "13"}};
        if (!text.empty()) imageForm["text"] = videoForm["text"] = text;
        all.push_back({ArticleRequest::addComment("42", text),
                       "POST",
                       "/article/json_add_comment.html",
                       {{"id", "42"}},
                       {{"text", text}}});
        all.push_back({ArticleRequest::createArticle(text, text + "."),
                       "POST",
                       "/article/update_article_json.html",
                       {},
                       {{"title", text}, {"text", text + "."}}});
        all.push_back({ArticleRequest::updateArticle(id, text, ""),
                       "POST",
                       "/article/update_article_json.html",
                       {{"id", "42"}},
                       {{"title", text}, {"text", ""}}});
        // Captions stand in the address, whose length has a bound.
        const std::string caption = text.substr(0, std::min<std::size_t>(text.size(), captionBytes));
        all.push_back({ArticleRequest::setImageCaption(id, caption),
                       "GET",
                       "/article/image_update",
                       {{"id", "42"}, {"text", caption}}});
        all.push_back({ArticleRequest::setVideoCaption(id, caption),
                       "GET",
                       "/article/video_update",
                       {{"id", "42"}, {"text", caption}}});
        all.push_back({ArticleRequest::uploadImage(
                           "42", 5, UploadFile::madeBy([everyByte] { return Data::copy(everyByte); }), text),
                       "POST",
                       "/article/image_update",
                       query,
                       imageForm,
                       {{"image.jpg", everyByte}}});
        ArticleVideoFields fields;
        fields.text = text;
        fields.altitude = "+012.345";
        fields.duration = 12.6f;
        all.push_back(
            {ArticleRequest::uploadVideo("42", 5, Data::copy("still"), UploadFile::atPath(clip), fields),
             "POST",
             "/article/video_update",
             query,
             videoForm,
             {{"thumbnail.jpg", "still"}, {"video.mp4", everyByte + everyByte}}});
    }
    exchange(all);

    std::optional<std::string> error;
    ArticleRequest::setImageCaption(id, long1).send(
        [&](const ArticleAnswer& answer) { error = answer.error; });
    EXPECT_TRUE(loop_->run([&] { return error.has_value(); }, 20));
    EXPECT_EQ(error, "The address of the request is too long.");
}

TEST_F(DjangoTest, everyCharacterOfEveryPlaneArrives) {
    const Value id = Dictionary::parse(R"({"id":1})")["id"];
    for (char32_t number = 0; number <= 16; ++number) {
        const std::string text = plane(number);
        exchange({{ArticleRequest::setImageCaption(id, text),
                   "GET",
                   "/article/image_update",
                   {{"id", "1"}, {"text", text}}},
                  {ArticleRequest::createArticle(text, text),
                   "POST",
                   "/article/update_article_json.html",
                   {},
                   {{"title", text}, {"text", text}}},
                  {ArticleRequest::uploadImage("1", 0, Data::copy("x"), text),
                   "POST",
                   "/article/image_update",
                   {{"article_id", "1"}, {"value", "0"}},
                   {{"text", text}},
                   {{"image.jpg", "x"}}}});
    }
}

}  // namespace
}  // namespace ostrel
