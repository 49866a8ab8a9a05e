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
        limits.transport.connectTimeoutSeconds = 5;
        limits.transport.stallTimeoutSeconds = 1;
        return limits;
    }

    HttpServerFramework& start(HttpServerFramework::Limits limits = {}, std::shared_ptr<SessionStore> store = nullptr) {
        return startAt(server_.address(), limits, std::move(store));
    }
    HttpServerFramework& startAt(const std::string& address, HttpServerFramework::Limits limits = {},
                                 std::shared_ptr<SessionStore> store = nullptr) {
        HttpServerFramework::Options options;
        options.baseAddress = address;
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

    bool runUntil(const std::function<bool()>& isDone, double seconds = 20) { return loop_->run(isDone, seconds); }

    Texts get(const std::string& path) {
        return await([&](AnswerHandler handler) { client().request(path, std::move(handler)); });
    }
    Texts post(const std::string& path, const FormFields& fields) {
        return await([&](AnswerHandler handler) { client().postURL(path, fields, std::move(handler)); });
    }
    Texts upload(const UploadBody& body, ProgressHandler progress = nullptr) {
        return await([&](AnswerHandler handler) {
            client().postManyDataURL("upload", body, std::move(handler), std::move(progress));
        });
    }
    Texts await(const std::function<void(AnswerHandler)>& send) {
        // Shared, for a handler that is called once more after this returned.
        const auto texts = std::make_shared<std::optional<Texts>>();
        send([texts](const auto& answer, const auto& error) {
            EXPECT_FALSE(*texts) << "called twice";
            *texts = Texts{answer ? std::optional(answer->string()) : std::nullopt, error};
        });
        EXPECT_FALSE(*texts) << "called before the call returned";
        EXPECT_TRUE(runUntil([&] { return texts->has_value(); }, 60));
        return texts->value_or(Texts{});
    }

    static Answer answer(std::string_view body, int status = 200, std::string_view headers = {}) {
        return ScriptedHttpServer::answer(body, status, headers);
    }
    /// Sends `bytes` and then nothing more, with the connection open.
    static Answer hanging(std::string bytes = {}) {
        Answer answer;
        answer.bytes = std::move(bytes);
        answer.hangs = true;
        return answer;
    }
    static Answer late(double seconds, Answer answer) {
        answer.delaySeconds = seconds;
        return answer;
    }
    /// The whole answer but its last bytes.
    static Answer cut(std::size_t missing, Answer answer) {
        answer.cutAfter = answer.bytes.size() - missing;
        return answer;
    }
    static Answer raw(std::string bytes) {
        Answer answer;
        answer.bytes = std::move(bytes);
        answer.closes = true;
        return answer;
    }

    /// Signs in by a scripted answer that sets the session's cookie to `session`.
    void signIn(const std::string& session = "secret") {
        server_.on("/account/sign_in",
                   answer(R"({"success":true,"user":{"id":7,"name":"Ada"}})", 200,
                          "Set-Cookie: ostrel_session=" + session + "; Path=/; HttpOnly; Max-Age=2592000\r\n"));
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
