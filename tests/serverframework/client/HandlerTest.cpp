#include "tests/serverframework/FrameworkTest.h"

#include <atomic>
#include <random>
#include <thread>
#include <vector>

namespace ostrel {
namespace {

using HandlerTest = FrameworkTest;

TEST_F(HandlerTest, runsExactlyOnceWhateverHappens) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto pick = [&](int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); };

    auto whole = ScriptedHttpServer::answer(R"({"success":true,"results":[{"id":1}]})");
    auto late = whole;
    late.delaySeconds = 0.02;
    auto cut = whole;
    cut.cutAfter = whole.bytes.size() / 2;
    Answer hanging;
    hanging.hangs = true;
    server_.on("/whole", whole);
    server_.on("/late", late);
    server_.on("/cut", cut);
    server_.on("/closed", Answer{});
    server_.on("/hanging", hanging);
    server_.on("/round", ScriptedHttpServer::answer("", 302, "Location: /round\r\n"));
    server_.on("/account/avatar/1", late);
    const std::string paths[] = {"/whole",   "/late",  "/cut",     "/closed",
                                 "/hanging", "/round", "/missing", "http://other/"};

    for (int round = 0; round < 12; ++round) {
        start(shortLimits());
        constexpr int count = 40;
        std::vector<std::atomic<int>> calls(count);
        std::vector<std::atomic<bool>> returned(count);
        std::atomic<int> early{0};
        std::atomic<int> offMain{0};
        std::vector<std::shared_ptr<Transfer>> transfers;
        const auto note = [&](int i) {
            ++calls[static_cast<std::size_t>(i)];
            if (!returned[static_cast<std::size_t>(i)]) ++early;
            if (!loop_->isMainThread()) ++offMain;
        };
        // Half of the calls come from another thread.
        std::vector<std::pair<int, std::string>> others;
        for (int i = 0; i < count; ++i) {
            const std::string path = paths[pick(std::size(paths))];
            switch (pick(5)) {
            case 0: client().request(path, [&note, i](const auto&, const auto&) { note(i); }); break;
            case 1:
                transfers.push_back(client().postManyDataURL(
                    path, {{"image.jpg", Data::copy(std::string_view("bytes"))}, {"text", std::string("t")}},
                    [&note, i](const auto&, const auto&) { note(i); }, [](double) {}));
                break;
            case 2: client().loadUserFace(i % 2 ? "1" : "none", [&note, i](const Data&) { note(i); }); break;
            case 3:
                framework().requestManager().request(server_.address() + path,
                                                     [&note, i](const Data&, bool, const auto&) { note(i); });
                break;
            default: others.emplace_back(i, path); continue;
            }
            returned[static_cast<std::size_t>(i)] = true;
        }
        OstrelServer& server = client();
        std::thread thread([&] {
            for (const auto& [i, path] : others) {
                server.request(path, [&note, number = i](const auto&, const auto&) { note(number); });
                returned[static_cast<std::size_t>(i)] = true;
            }
        });
        // The main loop stands still meanwhile, so that a call has returned before its handler can run.
        thread.join();
        for (int turn = pick(30); turn > 0; --turn) {
            loop_->runTurn();
            if (!transfers.empty() && pick(3) == 0)
                transfers[static_cast<std::size_t>(pick(static_cast<int>(transfers.size())))]->cancel();
        }
        framework_.reset();
        for (const auto& transfer : transfers) transfer->cancel();
        while (loop_->runTurn()) {}
        for (int i = 0; i < count; ++i)
            ASSERT_EQ(calls[static_cast<std::size_t>(i)], 1) << "round " << round << " call " << i;
        EXPECT_EQ(early, 0);
        EXPECT_EQ(offMain, 0);
    }
}

TEST_F(HandlerTest, theEndOfTheFrameworkCancelsWhatIsUnderWay) {
    Answer hanging;
    hanging.hangs = true;
    server_.on("/hanging", hanging);
    Texts texts;
    std::optional<std::string> mediumError;
    bool faceCame = false;
    client().request("/hanging", [&](const auto& answer, const auto& error) { texts = {answer, error}; });
    framework().requestManager().request(server_.address() + "/hanging",
                                         [&](const Data&, bool, const auto& error) { mediumError = error; });
    server_.on("/account/avatar/1", hanging);
    client().loadUserFace("1", [&](const Data& image) { faceCame = image.isNull(); });
    ASSERT_TRUE(runUntil([&] { return server_.connectionCount() == 3; }));
    framework_.reset();
    EXPECT_FALSE(texts.error) << "called from the destructor";
    while (loop_->runTurn()) {}
    EXPECT_EQ(texts.error, "cancelled");
    EXPECT_EQ(mediumError, "cancelled");
    EXPECT_TRUE(faceCame);
}

TEST_F(HandlerTest, mayDestroyTheFramework) {
    server_.on("/a", ScriptedHttpServer::answer("{}"));
    bool done = false;
    client().request("/a", [&](const auto& answer, const auto&) {
        framework_.reset();
        done = answer == "{}";
    });
    EXPECT_TRUE(runUntil([&] { return done; }));
}

TEST_F(HandlerTest, endsOnTheMainThread) {
    // What a handler holds are views: they must not end on another thread.
    struct Held {
        SystemRunLoop& loop;
        std::atomic<int>& elsewhere;
        ~Held() {
            if (!loop.isMainThread()) ++elsewhere;
        }
    };
    std::atomic<int> elsewhere{0};
    server_.on("/a", ScriptedHttpServer::answer("{}"));
    int done = 0;
    for (int i = 0; i < 200; ++i) {
        auto held = std::make_shared<Held>(*loop_, elsewhere);
        client().postManyDataURL(
            i % 4 ? "/a" : "http://refused/", {{"text", std::string("a")}},
            [&done, held](const auto&, const auto&) { ++done; }, [held](double) {});
        client().loadUserFace("3", [&done, held](const Data&) { ++done; });
        framework().requestManager().request(server_.address() + "/a",
                                             [&done, held](const Data&, bool, const auto&) { ++done; });
    }
    ASSERT_TRUE(runUntil([&] { return done == 600; }));
    framework_.reset();
    EXPECT_EQ(elsewhere, 0);
}

TEST_F(HandlerTest, requestsThatWaitForAConnectionDoNotTimeOut) {
    auto limits = shortLimits();
    limits.connectTimeoutSeconds = 0.5;
    limits.connectionsPerHost = 2;
    start(limits);
    auto slow = ScriptedHttpServer::answer("{}");
    slow.delaySeconds = 0.4;
    server_.on("/slow", slow);
    int done = 0;
    for (int i = 0; i < 8; ++i) {
        client().request("/slow", [&](const auto&, const auto& error) {
            ++done;
            EXPECT_FALSE(error) << error.value_or("");
        });
    }
    ASSERT_TRUE(runUntil([&] { return done == 8; }));
    EXPECT_EQ(server_.mostAtOnce(), 2);
    EXPECT_EQ(server_.connectionCount(), 2);
}

}  // namespace
}  // namespace ostrel
