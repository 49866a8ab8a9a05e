#include "article/server/ArticleRequest.h"
#include "tests/serverframework/FrameworkTest.h"

#include <string>

namespace ostrel {
namespace {

using AnswerTest = FrameworkTest;

ScriptedHttpServer::Answer raw(std::string bytes) {
    ScriptedHttpServer::Answer answer;
    answer.bytes = std::move(bytes);
    answer.closes = true;
    return answer;
}

TEST_F(AnswerTest, everyFaultHasItsErrorAndKeepsWhatArrived) {
    struct Case {
        const char* name;
        Answer script;
        const char* answer;  // null: absent
        const char* error;   // null: absent
    };
    auto cut = ScriptedHttpServer::answer("{\"success\":true}");
    cut.cutAfter = cut.bytes.size() - 4;
    auto cutHead = ScriptedHttpServer::answer("{}");
    cutHead.cutAfter = 12;
    Answer silent;
    silent.hangs = true;
    auto stuck = ScriptedHttpServer::answer("0123456789");
    stuck.bytes.resize(stuck.bytes.size() - 5);
    stuck.hangs = true;
    Answer stream = raw("HTTP/1.1 200 OK\r\n\r\n");
    stream.filling = std::string(1024 * 1024, 'x');
    stream.fillings = 200;
    Answer endlessHeader = raw("HTTP/1.1 200 OK\r\n");
    endlessHeader.filling = "X-Filler: " + std::string(1000, 'y') + "\r\n";
    endlessHeader.fillings = 100'000;

    const Case cases[] = {
        {"whole", ScriptedHttpServer::answer("{\"success\":true}"), "{\"success\":true}", nullptr},
        {"chunked",
         raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\n{\"a\r\n4\r\n\":1}\r\n0\r\n\r\n"),
         "{\"a\":1}", nullptr},
        {"until closed", raw("HTTP/1.0 200 OK\r\n\r\n{}"), "{}", nullptr},
        {"empty", ScriptedHttpServer::answer(""), "", nullptr},
        {"refused", ScriptedHttpServer::answer(R"({"success":false,"error":"Not yours."})", 403),
         R"({"success":false,"error":"Not yours."})", "Not yours."},
        {"refused without a sentence", ScriptedHttpServer::answer("<html>", 500), "<html>",
         "HTTP 500 Reason"},
        {"refused without a body", ScriptedHttpServer::answer("", 404), nullptr, "HTTP 404 Reason"},
        {"refused without a reason", raw("HTTP/1.1 503\r\n\r\n"), nullptr, "HTTP 503"},
        {"cut", cut, "{\"success\":t", "The answer of the server was cut short."},
        {"cut head", cutHead, nullptr, nullptr},
        {"cut chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\n{\"a"), "{\"a",
         "The answer of the server was cut short."},
        {"bad chunk", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n2\r\n{}\r\nzz\r\n"), "{}",
         "The answer of the server was cut short."},
        {"length too large", raw("HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\n{}"), "{}",
         "The answer of the server was cut short."},
        {"length too small", raw("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}garbage"), "{}", nullptr},
        {"length beyond the limit", raw("HTTP/1.1 200 OK\r\nContent-Length: 33554433\r\n\r\n{}"), nullptr,
         "The answer is larger than 32 MiB."},
        {"closed at once", Answer{}, nullptr, "The server closed the connection without an answer."},
        {"not HTTP", raw("\x16\x03\x01 what is this?\r\n\r\n"), nullptr,
         "The server does not answer as a web server does."},
        {"not UTF-8", ScriptedHttpServer::answer("caf\xE9!"), "caf\xEF\xBF\xBD!",
         "The answer is not text in UTF-8."},
        {"silent", silent, nullptr, "The server stopped answering."},
        {"stuck", stuck, "01234", "The server stopped answering."},
        {"endless header", endlessHeader, nullptr, "The header of the answer is larger than 262144 bytes."},
    };
    start(shortLimits());
    for (const Case& one : cases) {
        server_.on("/a", one.script);
        const Texts texts = get("/a");
        if (std::string(one.name) == "cut head") {
            EXPECT_TRUE(texts.error) << one.name;
            continue;
        }
        EXPECT_EQ(texts.answer.value_or("none"), one.answer ? one.answer : "none") << one.name;
        EXPECT_EQ(texts.error.value_or("none"), one.error ? one.error : "none") << one.name;
    }
    server_.on("/a", stream);
    EXPECT_EQ(get("/a").error, "The answer is larger than 32 MiB.");
}

TEST_F(AnswerTest, aServerThatDoesNotListenCannotBeReached) {
    std::string address;
    {
        const ScriptedHttpServer gone;
        address = gone.address();
    }
    HttpServerFramework::Options options;
    options.baseAddress = address;
    options.mediaCacheFolder = cacheFolder_.path("media");
    framework_ = HttpServerFramework::create(options);
    const Texts texts = get("/a");
    EXPECT_EQ(texts.error, "The server cannot be reached.");
    EXPECT_FALSE(texts.answer);
}

TEST_F(AnswerTest, aServerThatSpeaksNoTlsIsNotTrusted) {
    server_.on("/a", ScriptedHttpServer::answer("{}"));
    HttpServerFramework::Options options;
    options.baseAddress = "https" + server_.address().substr(4);
    options.mediaCacheFolder = cacheFolder_.path("media");
    framework_ = HttpServerFramework::create(options);
    const Texts texts = get("/a");
    EXPECT_EQ(texts.error.value_or("").rfind("No secure connection to the server: ", 0), 0u)
        << texts.error.value_or("");
    EXPECT_FALSE(texts.answer);
}

TEST_F(AnswerTest, absoluteAddressesAreRefusedWithoutARequest) {
    ScriptedHttpServer other;
    other.on("/a", ScriptedHttpServer::answer("{}"));
    EXPECT_TRUE(get(other.address() + "/a").error);
    EXPECT_TRUE(get("//127.0.0.1/a").error);
    EXPECT_EQ(other.connectionCount() + server_.connectionCount(), 0);
}

TEST_F(AnswerTest, redirectsStayWithinTheOriginAndEnd) {
    ScriptedHttpServer other;
    other.on("/a", ScriptedHttpServer::answer("{}"));
    const auto to = [](const std::string& target, int status = 302) {
        return ScriptedHttpServer::answer("moved", status, "Location: " + target + "\r\n");
    };
    server_.on("/once", to("/twice"));
    server_.on("/twice", to("end?x=1", 301));
    server_.on("/end", ScriptedHttpServer::answer("{\"result\":\"end\"}"));
    server_.on("/round", to("/round"));
    server_.on("/away", to(other.address() + "/a"));
    server_.on("/file", to("file:///etc/hostname"));
    server_.on("/user", to("http://user@" + server_.address().substr(7) + "/end"));

    EXPECT_EQ(get("/once").answer, "{\"result\":\"end\"}");
    EXPECT_EQ(get("/round").error, "The server redirects more than 5 times.");
    EXPECT_EQ(server_.requestCount("/round"), 6u);
    for (const char* path : {"/away", "/file", "/user"})
        EXPECT_EQ(get(path).error, "The server redirects to another server.");
    EXPECT_EQ(other.connectionCount(), 0);
}

TEST_F(AnswerTest, aPostIsRepeatedOrBecomesAGetAsTheStatusSays) {
    for (const int status : {303, 307}) {
        server_.on("/from", ScriptedHttpServer::answer("", status, "Location: /to\r\n"));
        server_.on("/to", ScriptedHttpServer::answer("{}"));
        bool done = false;
        client().postURL("from", {{"text", "a b"}}, [&](const auto&, const auto& error) {
            done = true;
            EXPECT_FALSE(error) << error.value_or("");
        });
        ASSERT_TRUE(runUntil([&] { return done; }));
        const Request last = server_.requests().back();
        EXPECT_EQ(last.target, "/to");
        EXPECT_EQ(last.method, status == 307 ? "POST" : "GET");
        EXPECT_EQ(last.bodyBegin, status == 307 ? "text=a%20b" : "");
    }
}

TEST_F(AnswerTest, aFormKeepsEveryCharacter) {
    server_.on("/app/post", ScriptedHttpServer::answer("{}"));
    start({}, "/app/");
    bool done = false;
    client().postURL("/post", {{"text", "a&b=c+d\r\n\xE4\xBD\xA0"}, {"title", ""}},
                     [&](const auto&, const auto&) { done = true; });
    ASSERT_TRUE(runUntil([&] { return done; }));
    const Request request = server_.requests().back();
    EXPECT_EQ(request.bodyBegin, "text=a%26b%3Dc%2Bd%0D%0A%E4%BD%A0&title=");
    EXPECT_EQ(header(request, "content-type"), "application/x-www-form-urlencoded");
}

TEST_F(AnswerTest, theResultIsReadyWhenTheHandlerRuns) {
    std::string page = R"({"success":true,"results":[)";
    for (int i = 0; i < 100'000; ++i) page += R"({"id":)" + std::to_string(i) + R"(,"title":"t"},)";
    page.back() = ']';
    page += '}';
    server_.on("/page", ScriptedHttpServer::answer(page));
    std::size_t records = 0;
    bool again = false;
    client().request("/page", [&](const auto& answer, const auto& error) {
        ASSERT_FALSE(error);
        records = framework().parseResult(*answer)->resultsArray().size();
        // Whoever reads the text itself gets the document that the result was read from.
        EXPECT_EQ(Value::parse(*answer)["results"].elements().front()["title"].string().data(),
                  framework().parseResult(*answer)->resultsArray().front()["title"].string().data());
        EXPECT_EQ(framework().statistics().answersParsedOnTheSpot, 0u);
        // A text that only looks the same is another one.
        again = framework().parseResult(std::string(*answer))->success();
    });
    ASSERT_TRUE(runUntil([&] { return records > 0; }));
    EXPECT_EQ(records, 100'000u);
    EXPECT_TRUE(again);
    EXPECT_EQ(framework().statistics().answersParsedAhead, 1u);
    EXPECT_EQ(framework().statistics().answersParsedOnTheSpot, 1u);
}

TEST_F(AnswerTest, theModulesJudgingUsesTheResultThatIsReady) {
    server_.on("/article/articles_json.html",
               ScriptedHttpServer::answer(R"({"success":true,"results":[{"id":1}]})"));
    start();
    OstrelServerFramework::install(framework_);
    std::size_t records = 0;
    ArticleRequest::listArticles().send(
        [&](const ArticleAnswer& answer) { records = answer.result->resultsArray().size(); });
    const bool arrived = runUntil([&] { return records > 0; });
    OstrelServerFramework::install(nullptr);
    ASSERT_TRUE(arrived);
    EXPECT_EQ(framework().statistics().answersParsedOnTheSpot, 0u);
}

TEST_F(AnswerTest, nestingWithoutEndIsAnErrorOfTheResult) {
    const std::string deep = "{\"results\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}";
    server_.on("/deep", ScriptedHttpServer::answer(deep));
    bool done = false;
    client().request("/deep", [&](const auto& answer, const auto& error) {
        done = true;
        EXPECT_FALSE(error);
        EXPECT_TRUE(framework().parseResult(*answer)->errString());
    });
    ASSERT_TRUE(runUntil([&] { return done; }));
    EXPECT_EQ(framework().statistics().answersParsedOnTheSpot, 0u);
}

}  // namespace
}  // namespace ostrel
