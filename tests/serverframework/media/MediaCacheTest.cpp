#include "tests/serverframework/FrameworkTest.h"

#include <string>
#include <thread>
#include <vector>

namespace ostrel {
namespace {

/// What the fetcher keeps, confirms and gives up, over restarts of the framework.
class MediaCacheTest : public FrameworkTest {
protected:
    struct Medium {
        std::string atOnce = "none";
        std::string data = "none";
        std::string error = "none";
    };
    Medium fetch(const std::string& path) { return fetchAddress(url(path)); }
    Medium fetchAddress(const std::string& address) {
        Medium medium;
        bool isDone = false;
        const Data atOnce =
            framework().requestManager().request(address, [&](const Data& data, bool loaded, const auto& error) {
                EXPECT_FALSE(isDone) << "called twice";
                isDone = true;
                if (loaded) medium.data = data.view();
                medium.error = error.value_or("none");
            });
        EXPECT_FALSE(isDone) << "called before the call returned";
        if (atOnce) medium.atOnce = atOnce.view();
        EXPECT_TRUE(runUntil([&] { return isDone; })) << address;
        return medium;
    }
    /// Whether it was fetched as wanted, in short: "atOnce/data/error".
    std::string shown(const std::string& path) {
        const Medium medium = fetch(path);
        return medium.atOnce + "/" + medium.data + "/" + medium.error;
    }
    void restart() {
        framework_.reset();
        while (loop_->runTurn()) {}
    }
    std::string url(const std::string& path) const { return server_.address() + path; }
    std::size_t filesInCache() const {
        std::size_t count = 0;
        std::error_code notThereYet;
        for (const auto& entry : std::filesystem::directory_iterator(cacheFolder_.path("media"), notThereYet))
            count += entry.path().filename() != "lock";
        return count;
    }
    /// Answers 304 to those who have the tag.
    void serveTagged(const std::string& path, const std::string& body, const std::string& tag,
                     const std::string& control = "max-age=0") {
        const std::string headers = "ETag: " + tag + "\r\nCache-Control: " + control + "\r\n";
        server_.on(path, [=](const Request& request) {
            const bool hasIt = header(request, "if-none-match") == tag;
            return answer(hasIt ? "" : body, hasIt ? 304 : 200, headers);
        });
    }
};

TEST_F(MediaCacheTest, aFreshMediumOutlivesTheProcessAndAsksNobody) {
    const std::string large(1'000'000, 'l');
    const std::string huge(5'000'000, 'h');
    server_.on("/small", answer("small", 200, "Cache-Control: max-age=3600\r\n"));
    server_.on("/large", answer(large, 200, "Cache-Control: max-age=3600\r\n"));
    server_.on("/huge", answer(huge, 200, "Cache-Control: max-age=3600\r\n"));
    EXPECT_EQ(shown("/small"), "none/small/none");
    EXPECT_TRUE(shown("/large") == "none/" + large + "/none");
    EXPECT_TRUE(shown("/huge") == "none/" + huge + "/none");
    EXPECT_TRUE(shown("/huge") == huge + "/" + huge + "/none") << "there at once while it is still being written";
    restart();
    EXPECT_EQ(shown("/small"), "small/small/none");
    EXPECT_TRUE(shown("/large") == large + "/" + large + "/none");
    // Too large to be checked on the caller's thread: it comes to the handler.
    EXPECT_TRUE(shown("/huge") == "none/" + huge + "/none");
    EXPECT_TRUE(shown("/huge") == huge + "/" + huge + "/none");
    for (const char* path : {"/small", "/large", "/huge"}) EXPECT_EQ(server_.requestCount(path), 1u) << path;
}

TEST_F(MediaCacheTest, aStaleMediumIsShownAtOnceAndConfirmedOrReplaced) {
    serveTagged("/a", "one", "\"1\"");
    EXPECT_EQ(shown("/a"), "none/one/none");
    EXPECT_EQ(shown("/a"), "one/one/none");
    EXPECT_EQ(header(server_.requests().back(), "if-none-match"), "\"1\"");
    restart();
    EXPECT_EQ(shown("/a"), "one/one/none") << "its tag outlives the process, too";
    serveTagged("/a", "two", "\"2\"");
    EXPECT_EQ(shown("/a"), "one/two/none");
    EXPECT_EQ(shown("/a"), "two/two/none");
    EXPECT_EQ(server_.requestCount("/a"), 5u);
    serveTagged("/a", "two", "\"2\"", "max-age=60");
    EXPECT_EQ(shown("/a"), "two/two/none");
    EXPECT_EQ(shown("/a"), "two/two/none");
    EXPECT_EQ(server_.requestCount("/a"), 6u) << "confirmed for a minute";

    const std::string modified = "Sat, 21 Nov 2020 02:32:38 GMT";
    server_.on("/b", answer("b", 200, "Cache-Control: max-age=0\r\nLast-Modified: " + modified + "\r\n"));
    fetch("/b");
    server_.on("/b", answer("", 304, ""));
    EXPECT_EQ(shown("/b"), "b/b/none");
    EXPECT_EQ(header(server_.requests().back(), "if-modified-since"), modified);
}

TEST_F(MediaCacheTest, whatIsKeptStandsWhenTheServerFailsAndGoesWhenItSaysSo) {
    const auto serve = [&](const std::string& control) {
        server_.on("/a", answer("one", 200, "Cache-Control: " + control + "\r\n"));
        fetch("/a");
    };
    const struct {
        const char* control;
        Answer script;
        const char* shown;
        const char* shownAfterwards;
    } cases[] = {
        {"max-age=0", answer("", 500), "one/one/none", "one/later/none"},
        {"max-age=0", answer("", 429), "one/one/none", "one/later/none"},
        {"max-age=0", Answer{}, "one/one/none", "one/later/none"},
        {"max-age=0", answer("gone", 404), "one/none/HTTP 404 Reason", "none/later/none"},
        {"max-age=0", answer("", 403), "one/none/HTTP 403 Reason", "none/later/none"},
        {"no-cache", answer("", 500), "none/none/HTTP 500 Reason", "none/later/none"},
        {"no-store", answer("", 500), "none/none/HTTP 500 Reason", "none/later/none"},
        {"max-age=0", answer("two", 200, "Cache-Control: no-store\r\n"), "one/two/none", "none/later/none"},
        {"max-age=0", answer("<html>", 200, "Content-Type: Text/HTML; charset=utf-8\r\n"), "one/one/none",
         "one/later/none"},
    };
    for (const auto& one : cases) {
        server_.on("/a", answer("", 404));
        fetch("/a");
        serve(one.control);
        server_.on("/a", one.script);
        EXPECT_EQ(shown("/a"), one.shown) << one.shown;
        server_.on("/a", answer("later", 200, "Cache-Control: max-age=0\r\n"));
        EXPECT_EQ(shown("/a"), one.shownAfterwards) << one.shown;
    }
    restart();
    server_.on("/a", answer("", 404));
    fetch("/a");
    restart();
    EXPECT_EQ(shown("/a"), "none/none/HTTP 404 Reason");
    EXPECT_EQ(filesInCache(), 0u);
}

TEST_F(MediaCacheTest, badAnswersEndWithAnErrorAndLeaveNothing) {
    HttpServerFramework::Limits limits = shortLimits();
    limits.media.maximumMediumBytes = 2'000'000;
    start(limits);
    Answer endless = raw("HTTP/1.1 200 OK\r\n\r\n");
    endless.filling = std::string(65'536, 'x');
    endless.fillings = 100'000;
    Answer refusal = endless;
    refusal.bytes = "HTTP/1.1 404 Not Found\r\n\r\n";
    const std::string half(500'000, 'x');
    const struct {
        Answer script;
        const char* error;
    } cases[] = {
        {endless, "The answer is larger than 2000000 bytes."},
        {hanging("HTTP/1.1 200 OK\r\nContent-Length: 900000\r\n\r\n" + half), "The server stopped answering."},
        {cut(300'000, answer(half + half)), "The answer of the server was cut short."},
        {refusal, "HTTP 404 Not Found"},
        {Answer{}, "The server closed the connection without an answer."},
        {answer("<html>", 200, "Content-Type: text/html\r\n"),
         "The address leads to a web page, not to a picture or a video."},
        {answer("", 304), "HTTP 304 Reason"},
    };
    for (const auto& one : cases) {
        server_.on("/a", one.script);
        EXPECT_EQ(shown("/a"), std::string("none/none/") + one.error);
    }
    for (const char* none : {"file:///etc/hostname", "", "http://", "data:text/plain,a"})
        EXPECT_EQ(fetchAddress(none).error, "The address is not an http or https address.") << none;
    restart();
    EXPECT_EQ(filesInCache(), 0u);
}

TEST_F(MediaCacheTest, whatIsTakenBackEndsUnlessSomebodyElseWaits) {
    server_.on("/hanging", hanging());
    server_.on("/slow", late(0.3, answer("slow")));
    OstrelRequestManager& media = framework().requestManager();
    std::vector<std::string> log;
    const auto ask = [&](const std::string& path) {
        media.request(url(path), [&log, path](const Data&, bool loaded, const auto& error) {
            log.push_back(path + (loaded ? " loaded" : " " + *error));
        });
    };
    std::thread(ask, "/slow").join();
    ask("/slow");
    media.cancel(url("/slow"));
    for (int i = 0; i < 6; ++i) ask("/hanging?" + std::to_string(i));
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/hanging") == 3; }));
    for (int i = 0; i < 6; ++i) media.cancel(url("/hanging?" + std::to_string(i)));
    media.cancel(url("/unknown"));
    ASSERT_TRUE(runUntil([&] { return log.size() == 8; }));
    EXPECT_EQ(std::count(log.begin(), log.end(), "/slow loaded"), 2);
    EXPECT_EQ(server_.requestCount("/slow"), 1u) << "equal requests are joined";
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(std::count(log.begin(), log.end(), "/hanging?" + std::to_string(i) + " cancelled"), 1);
    // The lanes are free again.
    server_.on("/hanging", answer("now"));
    EXPECT_EQ(shown("/hanging?7"), "none/now/none");
    EXPECT_LE(server_.requestCount("/hanging"), 4u) << "what was queued was never asked for";
}

TEST_F(MediaCacheTest, hangingMediaDoNotKeepTheOthersWaitingForEver) {
    server_.on("/hanging", hanging());
    server_.on("/a", answer("a"));
    std::vector<std::string> order;
    const auto ask = [&](const std::string& path) {
        framework().requestManager().request(
            url(path), [&order, path](const Data&, bool loaded, const auto&) { order.push_back(path); });
    };
    for (int i = 0; i < 8; ++i) ask("/hanging?" + std::to_string(i));
    loop_->run([] { return false; }, 0.1);
    ask("/a");
    ASSERT_TRUE(runUntil([&] { return !order.empty(); }, 8));
    EXPECT_EQ(order.front(), "/a") << "what was asked for last comes before the fifth that hangs";
    ASSERT_TRUE(runUntil([&] { return server_.requestCount("/hanging") == 6; }, 8));
    server_.on("/b", answer("{}"));
    EXPECT_EQ(get("/b").answer, "{}") << "media never take all connections";
    EXPECT_EQ(server_.requestCount("/hanging"), 6u);
    restart();
}

TEST_F(MediaCacheTest, withoutAFolderMediaStayInMemory) {
    HttpServerFramework::Options options;
    options.baseAddress = server_.address();
    options.mediaCacheFolder = "";
    framework_ = HttpServerFramework::create(options);
    const std::string large(1'000'000, 'l');
    server_.on("/large", answer(large));
    EXPECT_TRUE(shown("/large") == "none/" + large + "/none");
    EXPECT_TRUE(shown("/large") == large + "/" + large + "/none");
    EXPECT_EQ(server_.requestCount("/large"), 1u);
    EXPECT_FALSE(std::filesystem::exists(cacheFolder_.path("media")));
}

TEST_F(MediaCacheTest, mediaUnderWayWhileTheFrameworkEndsAreToldOnceAndLeaveNothing) {
    server_.on("/slow", hanging(answer(std::string(3'000'000, 'x')).bytes.substr(0, 2'000'000)));
    int ended = 0;
    const auto ask = [this, &ended, &media = framework().requestManager()](int step) {
        for (int i = 0; i < 25; ++i) {
            media.request(url("/slow?" + std::to_string(i * step)),
                          [&ended](const Data&, bool, const auto& error) { ended += error == "cancelled"; });
        }
    };
    std::thread first(ask, 1), second(ask, 2);
    ask(3);
    first.join();
    second.join();
    ASSERT_TRUE(runUntil([&] { return filesInCache() > 0; })) << "some are arriving in files";
    framework_.reset();
    ASSERT_TRUE(runUntil([&] { return ended == 75; }));
    while (loop_->runTurn()) {}
    EXPECT_EQ(ended, 75);
    EXPECT_EQ(filesInCache(), 0u);
}

}  // namespace
}  // namespace ostrel
