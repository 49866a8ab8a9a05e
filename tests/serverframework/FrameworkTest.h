#pragma once

#include "platform/foundation/runloop/SystemRunLoop.h"
#include "serverframework/HttpServerFramework.h"
#include "tests/support/ScriptedHttpServer.h"
#include "tests/support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace ostrel {

struct Texts {
    std::optional<std::string> answer;
    std::optional<std::string> error;
};

/// A framework on a scripted server, with a run loop on real time.
class FrameworkTest : public testing::Test {
protected:
    using Answer = ScriptedHttpServer::Answer;
    using Request = ScriptedHttpServer::Request;

    FrameworkTest() { RunLoop::installMain(loop_); }
    ~FrameworkTest() override {
        framework_.reset();
        while (loop_->runTurn()) {}
        RunLoop::installMain(nullptr);
    }

    /// Limits short enough for tests of what hangs.
    static HttpServerFramework::Limits shortLimits() {
        HttpServerFramework::Limits limits;
        limits.connectTimeoutSeconds = 5;
        limits.stallTimeoutSeconds = 1;
        return limits;
    }

    HttpServerFramework& start(HttpServerFramework::Limits limits = {}, std::string prefix = {},
                               std::shared_ptr<SessionStore> store = nullptr) {
        HttpServerFramework::Options options;
        options.baseAddress = server_.address() + prefix;
        options.limits = limits;
        options.sessionStore = std::move(store);
        options.mediaCacheFolder = cacheFolder_.path("media");
        std::string error;
        framework_ = HttpServerFramework::create(options, &error);
        EXPECT_TRUE(framework_) << error;
        return *framework_;
    }

    HttpServerFramework& framework() { return framework_ ? *framework_ : start(); }
    OstrelServer& client() { return framework().shareServer(); }

    bool runUntil(const std::function<bool()>& isDone, double seconds = 20) {
        return loop_->run(isDone, seconds);
    }

    Texts get(const std::string& path) {
        std::optional<Texts> texts;
        client().request(path, [&](const auto& answer, const auto& error) { texts = Texts{answer, error}; });
        EXPECT_FALSE(texts) << "called before the call returned";
        EXPECT_TRUE(runUntil([&] { return texts.has_value(); })) << path << " was not answered";
        return texts.value_or(Texts{});
    }

    /// Signs in by a scripted answer that sets the session's cookie to `session`.
    void signIn(const std::string& session = "secret") {
        server_.on("/account/sign_in",
                   ScriptedHttpServer::answer(R"({"success":true,"user":{"id":7,"name":"Ada"}})", 200,
                                              "Set-Cookie: ostrel_session=" + session +
                                                  "; Path=/; HttpOnly; Max-Age=2592000\r\n"));
        bool done = false;
        framework().signIn("Ada", "password", [&](const auto& user, const auto& error) {
            done = true;
            EXPECT_TRUE(user) << error.value_or("");
        });
        EXPECT_TRUE(runUntil([&] { return done; }));
    }

    static std::string header(const Request& request, const std::string& name) {
        const auto found = request.headers.find(name);
        return found == request.headers.end() ? "" : found->second;
    }

    std::shared_ptr<SystemRunLoop> loop_ = std::make_shared<SystemRunLoop>();
    ScriptedHttpServer server_;
    TemporaryFolder cacheFolder_;
    std::shared_ptr<HttpServerFramework> framework_;
};

}  // namespace ostrel
