#include "tests/articleserver/ServerFixture.h"

#include <vector>

namespace articleserver {

namespace {

class ArticleRoutesTest : public ServerTest {};

}  // namespace

TEST_F(ArticleRoutesTest, RecordHasEveryKeyWithItsType) {
    StoredArticle article;
    article.authorId = userId("Ada");
    article.title = "标题 \"1\"";
    article.text = "one\r\ntwo\nthree \xF0\x9F\x90\xA6";
    article.modified = startTime;
    article.openComment = false;
    article.images = {{0, "f.jpg", "t.jpg", 1200, 800, "Caption"}};
    article.videos = {{0, "v.mp4", "s.jpg", 640, 360, 12.5, "Video"}};
    auto id = store().addArticle(article);
    ASSERT_TRUE(id);
    ASSERT_TRUE(store().likeArticle(*id, "somebody"));

    nlohmann::json record = get("/article/articles_json.html").json["results"][0];
    std::string base = server_->url();
    auto wanted = nlohmann::json::parse(R"({
        "id": 1, "title": "标题 \"1\"", "text": "one\r\ntwo\nthree 🐦", "auth_name": "Ada", "auth_id": 1,
        "modifie_date": "2026-11-21T02:32:38.123Z", "liked": 1, "comment": 0, "open_comment": false,
        "images": [{"id": 1, "image_width": 1200, "image_height": 800, "text": "Caption"}],
        "videos": [{"id": 1, "video_width": 640, "video_height": 360, "duration": 12.5, "text": "Video"}]})");
    wanted["url"] = base + "/article/1";
    wanted["images"][0]["image"] = base + "/media/f.jpg";
    wanted["images"][0]["thumbnail"] = base + "/media/t.jpg";
    wanted["videos"][0]["video"] = base + "/media/v.mp4";
    wanted["videos"][0]["thumbnail"] = base + "/media/s.jpg";
    EXPECT_EQ(record, wanted);
}

TEST_F(ArticleRoutesTest, PagesStayApartWhenArticlesComeInBetween) {
    const Answer empty = get("/article/articles_json.html");
    EXPECT_EQ(empty.header("Content-Type"), "application/json; charset=utf-8");
    EXPECT_EQ(empty.json,
              nlohmann::json::parse(R"({"success":true,"error":null,"result":null,"results":[],"more":null})"));
    std::vector<std::int64_t> old, seen;
    for (int count = 0; count < 20; ++count) old.insert(old.begin(), addArticle("Ada"));
    EXPECT_TRUE(get("/article/articles_json.html").json["more"].is_null()) << "exactly one page";
    for (int count = 0; count < 25; ++count) old.insert(old.begin(), addArticle("Ada"));
    std::string path = "/article/articles_json.html";
    int pages = 0;
    while (!path.empty() && pages < 10) {
        const Answer answer = get(path);
        ASSERT_EQ(answer.status, 200);
        EXPECT_EQ(answer.json["results"].size(), pages < 2 ? 20U : 5U);
        for (const auto& record : answer.json["results"]) seen.push_back(record["id"]);
        path = answer.json["more"].is_null() ? "" : answer.json["more"].get<std::string>();
        ++pages;
        addArticle("Bo");
    }
    EXPECT_EQ(seen, old);
}

TEST_F(ArticleRoutesTest, OwnListHoldsOwnArticlesOnly) {
    EXPECT_EQ(get("/article/my_articles_json.html").status, 401);
    std::string ada = signUp("Ada");
    for (int count = 0; count < 44; ++count) addArticle(count % 2 == 0 ? "Ada" : "Bo");
    Answer first = get("/article/my_articles_json.html", ada);
    ASSERT_EQ(first.json["results"].size(), 20U);
    for (const auto& record : first.json["results"]) EXPECT_EQ(record["auth_name"], "Ada");
    EXPECT_EQ(get(first.json["more"], ada).json["results"].size(), 2U);
    EXPECT_EQ(get(first.json["more"]).status, 401);
}

TEST_F(ArticleRoutesTest, BadIdsAreRefusedClearly) {
    addArticle("Ada");
    for (const char* id : {"", "x", "1x", "-1", "+1", " 1", "1.0", "0x1", "9223372036854775808",
                           "99999999999999999999999999", "%00", "1%0A", "\xEF\xBC\x91", "1&id=2"}) {
        Answer answer = get(std::string("/article/like_article_json.html?id=") + id);
        EXPECT_EQ(answer.status, 400) << id;
        EXPECT_EQ(answer.json["success"], false) << id;
    }
    for (const char* id : {"0", "2", "9223372036854775807"}) {
        EXPECT_EQ(get(std::string("/article/like_article_json.html?id=") + id).status, 404) << id;
    }
    EXPECT_EQ(get("/article/articles_json.html?before=x").status, 400);
    EXPECT_EQ(get("/article/article_9223372036854775808_json.html").status, 404);
    EXPECT_EQ(get("/article/article_x_json.html").status, 404);
}

TEST_F(ArticleRoutesTest, AnAccountLikesOnceAndAVisitorLikesOnce) {
    const std::string path = "/article/like_article_json.html?id=1";
    std::string ada = signUp("Ada");
    addArticle("Ada");
    EXPECT_EQ(get(path, ada).json["result"], "1");
    EXPECT_EQ(get(path, ada).json["result"], "1");

    Answer first = get(path);
    EXPECT_EQ(first.json["result"], "2");
    std::string visitor = first.cookie("ostrel_visitor");
    ASSERT_FALSE(visitor.empty());
    const Answer again = get(path, visitor);
    EXPECT_EQ(again.json["result"], "2");
    EXPECT_EQ(again.cookie("ostrel_visitor"), "");
    EXPECT_EQ(get(path, "ostrel_visitor=forged").json["result"], "3");
    EXPECT_EQ(get("/article/articles_json.html").json["results"][0]["liked"], 3);
}

TEST_F(ArticleRoutesTest, CommentsCountAndComeBackAndAreThrottledByAuthor) {
    std::string bo = signUp("Bo");
    addArticle("Ada");
    addArticle("Ada", "Closed", "", false);
    const std::string path = "/article/json_add_comment.html?id=1";

    struct Case {
        std::string path;
        httplib::Params form;
        std::string cookie;
        int status;
    };
    for (const Case& tried :
         {Case{path, {{"text", "Hello"}}, "", 401}, Case{path, {}, bo, 400}, Case{path, {{"text", " \n"}}, bo, 400},
          Case{path, {{"text", std::string(10001, 'x')}}, bo, 413},
          Case{"/article/json_add_comment.html?id=2", {{"text", "Hello"}}, bo, 403},
          Case{"/article/json_add_comment.html?id=3", {{"text", "Hello"}}, bo, 404}}) {
        EXPECT_EQ(post(tried.path, tried.form, tried.cookie).status, tried.status) << tried.path;
    }
    EXPECT_EQ(post(path, {{"text", "a & b = 你好\r\n+1"}}, bo).json["result"], "1");
    now_ += 1000;
    EXPECT_EQ(post(path, {{"text", "Second"}}, bo).json["result"], "2");

    nlohmann::json record = get("/article/article_1_json.html").json;
    EXPECT_EQ(record["comment"], 2);
    ASSERT_EQ(record["comments"].size(), 2U);
    EXPECT_EQ(record["comments"][0]["text"], "a & b = 你好\r\n+1");
    EXPECT_EQ(record["comments"][0]["auth_name"], "Bo");
    EXPECT_EQ(record["comments"][1]["date"], "2026-11-21T02:32:39.123Z");

    int taken = 2;
    while (taken < 100 && post(path, {{"text", "Hello"}}, bo).status == 200) ++taken;
    // The comment on the closed article and the one on no article count, too.
    EXPECT_EQ(taken, 58);
    EXPECT_EQ(post(path, {{"text", "x"}}, bo).json["error"], "Too many comments. Try again in a few minutes.");
    EXPECT_EQ(post(path, {{"text", "x"}}, signUp("Cy")).status, 200);
    now_ += 5 * 60 * 1000 + 1;
    EXPECT_EQ(post(path, {{"text", "x"}}, bo).json["result"], "60");
}

TEST_F(ArticleRoutesTest, AGiantArticleComesInBoundedAnswers) {
    ImportedContent content;
    content.users = {{0, "Bo", "", ""}};
    ImportedArticle imported;
    for (int count = 1; count <= 5200; ++count) {
        imported.comments.push_back({0, 0, "", count, std::to_string(count) + std::string(300, 'x')});
    }
    content.articles = {imported};
    ASSERT_TRUE(store().importInto(content));
    nlohmann::json record = get("/article/article_1_json.html").json;
    EXPECT_EQ(record["comment"], 5200);
    ASSERT_EQ(record["comments"].size(), 5000U);
    EXPECT_EQ(record["comments"][0]["id"], 201);
    EXPECT_EQ(record["more_comments"], "/article/comments_json.html?id=1&before=201");
    nlohmann::json older = get(record["more_comments"]).json;
    ASSERT_EQ(older["results"].size(), 200U);
    EXPECT_EQ(older["results"][199]["id"], 200);
    EXPECT_TRUE(older["more"].is_null());
    Answer page = get("/article/1");
    EXPECT_NE(page.body.find("Only the latest are shown."), std::string::npos);
    EXPECT_EQ(page.body.find(">5100x"), std::string::npos);
    EXPECT_NE(page.body.find(">5200x"), std::string::npos);
    for (const char* path : {"/article/comments_json.html?id=2", "/article/comments_json.html?id=1&before=x",
                             "/article/comments_json.html"}) {
        EXPECT_GE(get(path).status, 400) << path;
    }
}

TEST_F(ArticleRoutesTest, AddressesFollowTheHostHeaderOnlyWhenItIsValid) {
    addArticle("Ada");
    struct Case {
        const char* host;
        std::string base;
    };
    for (const Case& tried : {Case{"articles.example:8080", "http://articles.example:8080"},
                              Case{"user@host", server_->url()}, Case{"\"><script>", server_->url()}}) {
        Answer answer = get("/article/articles_json.html", "", {{"Host", tried.host}});
        EXPECT_EQ(answer.json["results"][0]["url"], tried.base + "/article/1") << tried.host;
    }
    publicUrl_ = "https://articles.example/";
    start();
    EXPECT_EQ(get("/article/articles_json.html").json["results"][0]["url"], "https://articles.example/article/1");
}

TEST_F(ArticleRoutesTest, PublicPageShowsTextAndNeverMarkup) {
    StoredArticle article;
    article.authorId = userId("A<i>da");
    article.title = "<script>alert(1)</script> & \"q\"";
    article.text = "one\r\n\r\ntwo\nthree <img src=x onerror='x'>";
    article.modified = now_;
    article.images = {{0, "f.jpg", "t.jpg", 3, 4, "\" onload=\"x"}};
    article.videos = {{0, "v.mp4", "p.jpg", 640, 360, 61.4, "</figcaption><script>"}};
    ASSERT_TRUE(store().addArticle(article));
    ASSERT_TRUE(store().addComment(1, userId("<b>Bo"), "<script>comment</script>\n&amp;", now_));
    Answer page = get("/article/1");
    EXPECT_EQ(page.status, 200);
    EXPECT_EQ(page.header("Content-Type"), "text/html; charset=utf-8");
    EXPECT_TRUE(page.header("Content-Security-Policy").starts_with("default-src 'none'"));
    for (const char* markup : {"<script", "<i>da", "<img src=x", "onerror='", "\" onload", "<b>Bo"}) {
        EXPECT_EQ(page.body.find(markup), std::string::npos) << markup;
    }
    for (const char* shown :
         {"&lt;script&gt;alert(1)&lt;/script&gt; &amp; &quot;q&quot;</h1>", "<p dir=\"auto\">one</p>",
          "two<br>\nthree &lt;img src=x onerror=&#39;x&#39;&gt;</p>", "A&lt;i&gt;da", "21 November 2026, 02:32 UTC",
          "<video src=\"/media/v.mp4\" poster=\"/media/p.jpg\"",
          "&lt;script&gt;comment&lt;/script&gt;<br>\n&amp;amp;</p>", "&lt;b&gt;Bo"}) {
        EXPECT_NE(page.body.find(shown), std::string::npos) << shown;
    }
    EXPECT_EQ(get("/article/1", "", {{"If-None-Match", page.header("ETag")}}).status, 304);
    Answer missing = get("/article/2");
    EXPECT_EQ(missing.status, 404);
    EXPECT_NE(missing.body.find("<h1>Article not found</h1>"), std::string::npos);
    EXPECT_EQ(get("/article.css").header("Content-Type"), "text/css; charset=utf-8");
}

}  // namespace articleserver
