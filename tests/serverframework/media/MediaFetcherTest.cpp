#include "serverframework/media/BoundedCache.h"
#include "tests/serverframework/FrameworkTest.h"

#include <string>
#include <thread>
#include <vector>

namespace ostrel {
namespace {

class MediaFetcherTest : public FrameworkTest {
protected:
    struct Medium {
        Data atOnce;
        std::optional<Data> data;
        bool loaded = false;
        std::optional<std::string> error;
    };
    Medium fetch(const std::string& url) {
        Medium medium;
        medium.atOnce =
            framework().requestManager().request(url, [&](const Data& data, bool loaded, const auto& error) {
                medium.data = data;
                medium.loaded = loaded;
                medium.error = error;
            });
        EXPECT_FALSE(medium.data) << "called before the call returned";
        EXPECT_TRUE(runUntil([&] { return medium.data.has_value(); }));
        return medium;
    }
    std::string url(const std::string& path) const { return server_.address() + path; }
};

TEST_F(MediaFetcherTest, aKeptMediumIsThereAtOnceAndForTheHandler) {
    server_.on("/a", ScriptedHttpServer::answer("bytes"));
    const Medium first = fetch(url("/a"));
    EXPECT_TRUE(first.atOnce.isNull());
    EXPECT_TRUE(first.loaded);
    EXPECT_EQ(first.data->view(), "bytes");
    const Medium second = fetch(url("/a"));
    EXPECT_EQ(second.atOnce.view(), "bytes");
    EXPECT_TRUE(second.loaded);
    EXPECT_EQ(server_.requestCount("/a"), 1u);
}

TEST_F(MediaFetcherTest, equalRequestsAreJoinedAlsoFromOtherThreads) {
    auto slow = ScriptedHttpServer::answer("bytes");
    slow.delaySeconds = 0.2;
    server_.on("/a", slow);
    int done = 0;
    OstrelRequestManager& media = framework().requestManager();
    const auto ask = [&] {
        for (int i = 0; i < 5; ++i)
            media.request(url("/a"), [&](const Data&, bool loaded, const auto&) { done += loaded; });
    };
    std::thread thread(ask);
    ask();
    thread.join();
    ASSERT_TRUE(runUntil([&] { return done == 10; }));
    EXPECT_EQ(server_.requestCount("/a"), 1u);
}

TEST_F(MediaFetcherTest, failuresAreToldAndNotKept) {
    const struct {
        Answer script;
        const char* error;
    } cases[] = {
        {ScriptedHttpServer::answer("gone", 404), "HTTP 404 Reason"},
        {Answer{}, "The server closed the connection without an answer."},
        {ScriptedHttpServer::answer(std::string(2001, 'x')), "The answer is larger than 2000 bytes."},
    };
    HttpServerFramework::Limits limits;
    limits.maximumMediumBytes = 2000;
    start(limits);
    for (const auto& one : cases) {
        server_.on("/a", one.script);
        const Medium medium = fetch(url("/a"));
        EXPECT_FALSE(medium.loaded);
        EXPECT_EQ(medium.error.value_or("none"), one.error);
    }
    server_.on("/a", ScriptedHttpServer::answer("now"));
    EXPECT_TRUE(fetch(url("/a")).loaded);
    for (const char* none : {"/a", "file:///etc/hostname", "", "http://", "data:text/plain,a"}) {
        EXPECT_EQ(fetch(none).error, "The address is not an http or https address.") << none;
    }
}

TEST_F(MediaFetcherTest, manyMediaLeaveConnectionsForTheServersRequests) {
    Answer hanging;
    hanging.hangs = true;
    server_.on("/hanging", hanging);
    server_.on("/a", ScriptedHttpServer::answer("{}"));
    int ended = 0;
    for (int i = 0; i < 20; ++i) {
        framework().requestManager().request(url("/hanging?" + std::to_string(i)),
                                             [&](const Data&, bool, const auto&) { ++ended; });
    }
    EXPECT_EQ(get("/a").answer, "{}");
    framework_.reset();
    ASSERT_TRUE(runUntil([&] { return ended == 20; }));
}

class FaceLoaderTest : public FrameworkTest {
protected:
    Data face(const std::string& userId) {
        std::optional<Data> result;
        client().loadUserFace(userId, [&](const Data& image) { result = image; });
        EXPECT_FALSE(result) << "called before the call returned";
        EXPECT_TRUE(runUntil([&] { return result.has_value(); }));
        return result.value_or(Data());
    }
};

TEST_F(FaceLoaderTest, asksOnceForTheSameUserAndOnceForNobody) {
    server_.on("/account/avatar/5", ScriptedHttpServer::answer("face"));
    int done = 0;
    for (int i = 0; i < 10; ++i) {
        client().loadUserFace("5", [&](const Data& image) { done += image.view() == "face"; });
    }
    ASSERT_TRUE(runUntil([&] { return done == 10; }));
    EXPECT_EQ(face("5").view(), "face");
    EXPECT_EQ(server_.requestCount("/account/avatar/5"), 1u);
    EXPECT_TRUE(face("6").isNull());
    EXPECT_TRUE(face("6").isNull());
    EXPECT_EQ(server_.requestCount("/account/avatar/6"), 1u);
}

TEST_F(FaceLoaderTest, onlyDecimalIdsAreAskedFor) {
    for (const char* id : {"", "-1", "1/../2", "1?a", "abc", "12345678901234567890"})
        EXPECT_TRUE(face(id).isNull()) << id;
    EXPECT_EQ(server_.connectionCount(), 0);
}

TEST_F(FaceLoaderTest, aFailureIsNotRememberedAndAGiantIsNone) {
    server_.on("/account/avatar/5", ScriptedHttpServer::answer("", 500));
    EXPECT_TRUE(face("5").isNull());
    server_.on("/account/avatar/5", ScriptedHttpServer::answer(std::string(1024 * 1024 + 1, 'x')));
    EXPECT_TRUE(face("5").isNull());
    server_.on("/account/avatar/5", ScriptedHttpServer::answer("face"));
    EXPECT_EQ(face("5").view(), "face");
}

TEST(BoundedCache, dropsWhatWasUsedLongestAgoAndNeverExceedsItsBound) {
    BoundedCache<int> cache(100'000);
    for (int i = 0; i < 100; ++i) {
        cache.insert(std::to_string(i), i, 10'000);
        cache.find("0");
        ASSERT_LE(cache.totalCost(), 100'000u);
    }
    EXPECT_TRUE(cache.find("0"));
    EXPECT_TRUE(cache.find("99"));
    EXPECT_FALSE(cache.find("50"));
    cache.insert("99", 1, 30'000);
    EXPECT_FALSE(cache.find("99")) << "too large to be kept, and the old content is gone";
}

}  // namespace
}  // namespace ostrel
