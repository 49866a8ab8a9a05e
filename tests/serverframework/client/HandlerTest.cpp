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

    const Answer whole = answer(R"({"success":true,"results":[{"id":1}]})");
    server_.on("/whole", whole);
    server_.on("/late", late(0.02, whole));
    server_.on("/cut", cut(20, whole));
    server_.on("/closed", Answer{});
    server_.on("/hanging", hanging());
    server_.on("/round", answer("", 302, "Location: /round\r\n"));
    server_.on("/account/avatar/1", late(0.02, whole));
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
        const auto call = [&](int i, const std::string& path, int kind) {
            const auto ended = [&note, i](const auto&...) { note(i); };
            switch (kind) {
            case 0:
                transfers.push_back(client().postManyDataURL(
                    path, {{"image.jpg", Data::copy("bytes")}, {"text", std::string("t")}}, ended, [](double) {}));
                break;
            case 1: client().loadUserFace(i % 2 ? "1" : "none", ended); break;
            case 2: framework().requestManager().request(server_.address() + path, ended); break;
            default: client().request(path, ended);
            }
            returned[static_cast<std::size_t>(i)] = true;
        };
        std::vector<std::pair<int, std::string>> others;
        for (int i = 0; i < count; ++i) {
            const std::string path = paths[pick(std::size(paths))];
            if (const int kind = pick(5); kind < 4) {
                call(i, path, kind);
            } else {
                others.emplace_back(i, path);
            }
        }
        std::thread thread([&] {
            for (const auto& [i, path] : others) call(i, path, 3);
        });
        // The main loop does not run until the thread has ended: a call returns before its handler can run.
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
    server_.on("/hanging", hanging());
    server_.on("/account/avatar/1", hanging());
    std::optional<std::string> answerError, mediumError;
    bool faceCame = false;
    client().request("/hanging", [&](const auto&, const auto& error) { answerError = error; });
    framework().requestManager().request(server_.address() + "/hanging",
                                         [&](const Data&, bool, const auto& error) { mediumError = error; });
    client().loadUserFace("1", [&](const Data& image) { faceCame = image.isNull(); });
    ASSERT_TRUE(runUntil([&] { return server_.connectionCount() == 3; }));
    framework_.reset();
    EXPECT_FALSE(answerError) << "called from the destructor";
    while (loop_->runTurn()) {}
    EXPECT_EQ(answerError, "cancelled");
    EXPECT_EQ(mediumError, "cancelled");
    EXPECT_TRUE(faceCame);
}

TEST_F(HandlerTest, mayDestroyTheFramework) {
    server_.on("/a", answer("{}"));
    bool done = false;
    client().request("/a", [&](const auto& text, const auto&) {
        framework_.reset();
        done = text == "{}";
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
    server_.on("/a", answer("{}"));
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
    limits.transport.connectTimeoutSeconds = 0.5;
    limits.transport.connectionsPerHost = 2;
    start(limits);
    server_.on("/slow", late(0.4, answer("{}")));
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
