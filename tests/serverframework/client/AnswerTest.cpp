#include "tests/serverframework/FrameworkTest.h"

#include <string>

namespace ostrel {
namespace {

using AnswerTest = FrameworkTest;

TEST_F(AnswerTest, everyFaultHasItsErrorAndKeepsWhatArrived) {
    struct Case {
        const char* name;
        Answer script;
        /// Null: absent.
        const char* text;
        const char* error;
    };
    Answer stream = raw("HTTP/1.1 200 OK\r\n\r\n");
    stream.filling = std::string(1024 * 1024, 'x');
    stream.fillings = 200;
    Answer endlessHeader = raw("HTTP/1.1 200 OK\r\n");
    endlessHeader.filling = "X-Filler: " + std::string(1000, 'y') + "\r\n";
    endlessHeader.fillings = 100'000;

    const Case cases[] = {
        {"whole", answer("{\"success\":true}"), "{\"success\":true}", nullptr},
        {"chunked", raw("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\n{\"a\r\n4\r\n\":1}\r\n0\r\n\r\n"),
         "{\"a\":1}", nullptr},
        {"until closed", raw("HTTP/1.0 200 OK\r\n\r\n{}"), "{}", nullptr},
        {"empty", answer(""), "", nullptr},
        {"refused", answer(R"({"success":false,"error":"Not yours."})", 403),
         R"({"success":false,"error":"Not yours."})", "Not yours."},
        {"refused without a sentence", answer("<html>", 500), "<html>", "HTTP 500 Reason"},
        {"refused without a body", answer("", 404), nullptr, "HTTP 404 Reason"},
        {"refused without a reason", raw("HTTP/1.1 503\r\n\r\n"), nullptr, "HTTP 503"},
        {"cut", cut(4, answer("{\"success\":true}")), "{\"success\":t", "The answer of the server was cut short."},
        {"cut head", raw("HTTP/1.1 200 OK\r\nContent-Le"), nullptr, "The answer of the server was cut short."},
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
        {"not UTF-8", answer("caf\xE9!"), "caf\xEF\xBF\xBD!", "The answer is not text in UTF-8."},
        {"silent", hanging(), nullptr, "The server stopped answering."},
        {"stuck", hanging("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01234"), "01234",
         "The server stopped answering."},
        {"endless header", endlessHeader, nullptr, "The header of the answer is larger than 262144 bytes."},
    };
    start(shortLimits());
    for (const Case& one : cases) {
        server_.on("/a", one.script);
        const Texts texts = get("/a");
        EXPECT_EQ(texts.answer.value_or("none"), one.text ? one.text : "none") << one.name;
        EXPECT_EQ(texts.error.value_or("none"), one.error ? one.error : "none") << one.name;
    }
    server_.on("/a", stream);
    EXPECT_EQ(get("/a").error, "The answer is larger than 32 MiB.");
}

TEST_F(AnswerTest, aServerThatIsNotThereOrSpeaksNoTlsIsAnError) {
    std::string gone = ScriptedHttpServer().address();
    startAt(gone);
    EXPECT_EQ(get("/a").error, "The server cannot be reached.");
    server_.on("/a", answer("{}"));
    startAt("https" + server_.address().substr(4));
    const Texts texts = get("/a");
    EXPECT_TRUE(texts.error.value_or("").starts_with("No secure connection to the server: "))
        << texts.error.value_or("");
    EXPECT_FALSE(texts.answer);
}

TEST_F(AnswerTest, absoluteAddressesAreRefusedWithoutARequest) {
    ScriptedHttpServer other;
    other.on("/a", answer("{}"));
    EXPECT_TRUE(get(other.address() + "/a").error);
    EXPECT_TRUE(get("//127.0.0.1/a").error);
    EXPECT_EQ(other.connectionCount() + server_.connectionCount(), 0);
}

TEST_F(AnswerTest, redirectsStayWithinTheOriginAndEnd) {
    ScriptedHttpServer other;
    other.on("/a", answer("{}"));
    const auto to = [](const std::string& target, int status = 302) {
        return answer("moved", status, "Location: " + target + "\r\n");
    };
    server_.on("/once", to("/twice"));
    server_.on("/twice", to("end?x=1", 301));
    server_.on("/end", answer("{\"result\":\"end\"}"));
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
        server_.on("/from", answer("", status, "Location: /to\r\n"));
        server_.on("/to", answer("{}"));
        EXPECT_FALSE(post("from", {{"text", "a b"}}).error);
        const Request last = server_.requests().back();
        EXPECT_EQ(last.target, "/to");
        EXPECT_EQ(last.method, status == 307 ? "POST" : "GET");
        EXPECT_EQ(last.bodyBegin, status == 307 ? "text=a%20b" : "");
    }
}

TEST_F(AnswerTest, theTextBringsItsResultAndItsJson) {
    std::string page = R"({"success":true,"results":[)";
    for (int i = 0; i < 100'000; ++i) page += R"({"id":)" + std::to_string(i) + R"(,"title":"t"},)";
    page.back() = ']';
    page += '}';
    server_.on("/page", answer(page));
    server_.on("/deep", answer("{\"results\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}"));
    std::optional<AnswerText> kept, deep;
    client().request("/page", [&](const auto& text, const auto&) { kept = text; });
    client().request("/deep", [&](const auto& text, const auto& error) {
        EXPECT_FALSE(error);
        deep = text;
    });
    ASSERT_TRUE(runUntil([&] { return kept && deep; }));
    framework_.reset();
    // No framework is installed: a text whose result had to be parsed now would end the process.
    const auto result = OstrelServerHtmlResultObject::initWithHtml(AnswerText(*kept));
    ASSERT_EQ(result->resultsArray().size(), 100'000u);
    EXPECT_EQ(kept->json()["results"].elements().front()["title"].string().data(),
              result->resultsArray().front()["title"].string().data())
        << "the result and the JSON are one document";
    std::string error;
    EXPECT_TRUE(deep->json(&error).isAbsent());
    EXPECT_NE(error, "");
    EXPECT_TRUE(OstrelServerHtmlResultObject::initWithHtml(*deep)->errString());
}

TEST_F(AnswerTest, aTextAloneIsParsedByTheInstalledFramework) {
    start();
    OstrelServerFramework::install(framework_);
    const AnswerText text = std::string(R"({"success":true,"results":[{"id":1}]})");
    EXPECT_EQ(OstrelServerHtmlResultObject::initWithHtml(text)->resultsArray().size(), 1u);
    EXPECT_EQ(text.json()["results"].count(), 1u);
    std::string error;
    EXPECT_TRUE(AnswerText("<html>").json(&error).isAbsent());
    EXPECT_NE(error, "");
    EXPECT_TRUE(OstrelServerHtmlResultObject::initWithHtml("<html>")->errString());
    OstrelServerFramework::install(nullptr);
}

}  // namespace
}  // namespace ostrel
