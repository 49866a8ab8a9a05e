#include "article/server/ArticleRequest.h"
#include "platform/foundation/resources/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/ScriptedServer.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <filesystem>

namespace ostrel {
namespace {

using Verdict = ArticleAnswer::Verdict;
using Purpose = ArticleRequest::LoadPurpose;

class ArticleRequestTest : public testing::Test {
protected:
    ArticleRequestTest() {
        setHomeDirectory(home_.path());
        OstrelServerFramework::install(server_);
    }
    ~ArticleRequestTest() override {
        OstrelServerFramework::install(nullptr);
        setHomeDirectory("");
    }

    /// Empty when there is none.
    std::string errorFile() const { return home_.read("Documents/error.html"); }

    const TemporaryFolder home_;
    std::shared_ptr<ScriptedServer> server_ = std::make_shared<ScriptedServer>();
};

Value number(const char* json) { return Value::parse(json); }

std::vector<ArticleRequest> everyRequest() {
    const Value id = number("42");
    return {ArticleRequest::listArticles(),
            ArticleRequest::listOwnArticles(),
            ArticleRequest::nextPage("/article/articles_json.html?before=9&x=%20"),
            ArticleRequest::removeArticle(id),
            ArticleRequest::likeArticle(id),
            ArticleRequest::loadArticle("42", Purpose::reading),
            ArticleRequest::addComment("42", "c"),
            ArticleRequest::createArticle("t", "x"),
            ArticleRequest::updateArticle(id, "t", "x"),
            ArticleRequest::uploadImage("42", 3, Data::copy("jpeg"), ""),
            ArticleRequest::uploadVideo("42", 0, Data::copy("jpeg"), Data::copy("mp4"), {}),
            ArticleRequest::setImageCaption(id, "a&b =ü"),
            ArticleRequest::setImagePosition(id, 5),
            ArticleRequest::removeImage(id),
            ArticleRequest::setVideoCaption(id, "a&b"),
            ArticleRequest::setVideoPosition(id, 0),
            ArticleRequest::removeVideo(id)};
}

TEST_F(ArticleRequestTest, EveryRequestGoesToItsPath) {
    const char* const paths[] = {"/article/articles_json.html",
                                 "/article/my_articles_json.html",
                                 "/article/articles_json.html?before=9&x=%20",
                                 "/article/remove?id=42",
                                 "/article/like_article_json.html?id=42",
                                 "/article/article_42_json.html",
                                 "/article/json_add_comment.html?id=42",
                                 "/article/update_article_json.html",
                                 "/article/update_article_json.html?id=42",
                                 "article/image_update?article_id=42&value=3",
                                 "article/video_update?article_id=42&value=0",
                                 "article/image_update?id=42&text=<a&b =ü>",
                                 "article/image_update?id=42&value=5",
                                 "article/image_remove?id=42",
                                 "article/video_update?id=42&text=<a&b>",
                                 "article/video_update?id=42&value=0",
                                 "article/video_remove?id=42"};
    const auto requests = everyRequest();
    ASSERT_EQ(requests.size(), std::size(paths));
    for (const auto& request : requests) request.send({});
    using enum ScriptedServer::Method;
    const ScriptedServer::Method methods[] = {get,       get,       get, get, get, get, form, form, form,
                                              multipart, multipart, get, get, get, get, get,  get};
    for (std::size_t i = 0; i < requests.size(); ++i) {
        EXPECT_EQ(server_->calls[i].path, paths[i]);
        EXPECT_EQ(server_->calls[i].method, methods[i]) << paths[i];
        EXPECT_EQ(server_->calls[i].fields, requests[i].fields());
        EXPECT_EQ(server_->calls[i].body.size(), requests[i].body().size());
    }
}

TEST_F(ArticleRequestTest, IdsReadTheSameAsNumberAndAsText) {
    for (const char* json : {"42", "\"42\""}) {
        EXPECT_EQ(ArticleRequest::removeArticle(number(json)).path(), "/article/remove?id=42") << json;
        EXPECT_EQ(ArticleRequest::updateArticle(number(json), "", "").path(), "/article/update_article_json.html?id=42")
            << json;
    }
    EXPECT_EQ(ArticleRequest::likeArticle(number("123456789012345678901234")).path(),
              "/article/like_article_json.html?id=123456789012345678901234");
}

TEST_F(ArticleRequestTest, BodiesCarryWhatThereIs) {
    EXPECT_EQ(ArticleRequest::addComment("1", "hé\n").fields(), (FormFields{{"text", "hé\n"}}));
    EXPECT_EQ(ArticleRequest::createArticle("T", "").fields(), (FormFields{{"text", ""}, {"title", "T"}}));

    const auto plain = ArticleRequest::uploadImage("1", 0, Data::copy("jpeg"), "");
    EXPECT_EQ(plain.body().size(), 1u) << "an empty caption is not sent";
    EXPECT_EQ(std::get<Data>(plain.body().at("image.jpg")).view(), "jpeg");
    EXPECT_EQ(std::get<std::string>(ArticleRequest::uploadImage("1", 0, {}, "c").body().at("text")), "c");

    const auto video = ArticleRequest::uploadVideo(
        "1", 0, Data::copy("t"), Data::copy("v"),
        {.text = "", .altitude = "12", .longitude = "", .latitude = "48.2", .duration = 12.6f});
    EXPECT_EQ(video.body().size(), 5u);
    EXPECT_EQ(std::get<std::string>(video.body().at("duration")), "13");
    EXPECT_EQ(std::get<std::string>(video.body().at("altitude")), "12");
    EXPECT_EQ(std::get<std::string>(video.body().at("latitude")), "48.2");
}

TEST_F(ArticleRequestTest, AnswersAreJudgedByTheirKind) {
    constexpr char good[] = R"({"success":true,"error":null,"result":"3"})";
    constexpr char refused[] = R"({"success":false,"error":null})";
    constexpr char failed[] = R"({"success":false,"error":"no"})";
    const auto S = Verdict::succeeded, F = Verdict::failed, N = Verdict::notJudged;
    // In the order of the catalogue: the verdict on a good result, a refusal, a reported error, no JSON, a transport
    // error.
    const Verdict verdicts[][5] = {{S, S, F, F, F}, {S, S, F, F, F}, {S, S, F, F, F}, {N, N, N, N, N}, {S, F, F, F, F},
                                   {S, S, S, F, F}, {S, S, F, F, F}, {S, S, S, F, F}, {S, S, S, S, F}, {S, S, S, S, F},
                                   {S, S, S, S, F}, {N, N, N, N, N}, {N, N, N, N, N}, {S, S, S, S, F}, {N, N, N, N, N},
                                   {N, N, N, N, N}, {S, S, S, S, F}};
    const auto requests = everyRequest();
    ASSERT_EQ(requests.size(), std::size(verdicts));
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const char* const answers[] = {good, refused, failed, "<html>"};
        for (std::size_t a = 0; a < 4; ++a) {
            EXPECT_EQ(requests[i].judge(answers[a], std::nullopt).verdict, verdicts[i][a]) << i + 1 << ", answer " << a;
        }
        EXPECT_EQ(requests[i].judge(std::nullopt, "down").verdict, verdicts[i][4]) << i + 1;
    }
}

TEST_F(ArticleRequestTest, FailuresLeaveTheErrorFileThatTheirKindAsksFor) {
    // 'a': the answer is left, 'e': the error text, '-': nothing.
    const std::string left = "------eaaaa------";
    const auto requests = everyRequest();
    ASSERT_EQ(requests.size(), left.size());
    for (std::size_t i = 0; i < requests.size(); ++i) {
        std::filesystem::remove(home_.path("Documents/error.html"));
        requests[i].judge("answer é", "error text");
        EXPECT_EQ(errorFile(), left[i] == 'a' ? "answer é" : left[i] == 'e' ? "error text" : "") << i + 1;
    }
    ArticleRequest::loadArticle("1", Purpose::afterSaving).judge("first", "e");
    ArticleRequest::createArticle("", "").judge(std::nullopt, "e");
    EXPECT_EQ(errorFile(), "first") << "a failure without an answer keeps the last one";
    ArticleRequest::createArticle("", "").judge("second", "e");
    EXPECT_EQ(errorFile(), "second");
}

TEST_F(ArticleRequestTest, ProgressOfUploadsIsLogged) {
    const LogCapture log;
    ArticleRequest::uploadImage("1", 0, Data::copy("x"), "").send({});
    ArticleRequest::uploadVideo("1", 0, {}, {}, {}).send({});
    server_->calls[0].progress(0.42125);
    server_->calls[1].progress(1);
    EXPECT_EQ(log.lines(),
              (std::vector<std::string>{"upload image progress:42.125%", "upload video progress:100.000%"}));
}

TEST_F(ArticleRequestTest, TheHandlerGetsTheRecordOfAJsonAnswer) {
    std::vector<ArticleAnswer> answers;
    ArticleRequest::createArticle("t", "x").send([&](const ArticleAnswer& answer) { answers.push_back(answer); });
    server_->answer(R"({"id":9007199254740993,"title":"t"})");
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_EQ(answers[0].record["id"].text(), "9007199254740993");
}

}  // namespace
}  // namespace ostrel
