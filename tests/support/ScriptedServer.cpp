#include "tests/support/ScriptedServer.h"

#include "platform/foundation/runloop/NSThread.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace ostrel {

namespace {

struct ScriptedResult final : OstrelServerHtmlResultObject {
    std::optional<std::string> err, more;
    bool good = false;
    std::string scalar;
    std::vector<Dictionary> records;
    const std::optional<std::string>& errString() const override { return err; }
    bool success() const override { return good; }
    const std::string& resultString() const override { return scalar; }
    const std::vector<Dictionary>& resultsArray() const override { return records; }
    const std::optional<std::string>& moreResultsURL() const override { return more; }
};

}  // namespace

void ScriptedServer::answer(std::optional<std::string> text, std::optional<std::string> error) {
    ASSERT_FALSE(calls.empty()) << "no call waits for an answer";
    const AnswerHandler handler = std::move(calls.front().handler);
    calls.pop_front();
    handler(text, error);
}

std::string ScriptedServer::page(const std::vector<std::string>& records, const std::string& more) {
    std::string text = R"({"success":true,"error":null,"results":[)";
    for (std::size_t i = 0; i < records.size(); ++i) text += (i ? "," : "") + records[i];
    return text + "],\"more\":" + (more.empty() ? "null" : "\"" + more + "\"") + "}";
}

std::shared_ptr<const OstrelServerHtmlResultObject> ScriptedServer::parseResult(const std::string& html) {
    auto result = std::make_shared<ScriptedResult>();
    const Dictionary answer = Dictionary::parse(html);
    if (!answer) {
        result->err = "unreadable";
        return result;
    }
    if (answer["error"].isString()) result->err = std::string(answer["error"].string());
    if (answer["more"].isString()) result->more = std::string(answer["more"].string());
    result->good = answer["success"].boolean();
    result->scalar = answer["result"].text().value_or("");
    for (const Value& record : answer["results"].elements()) {
        if (record.isDictionary()) result->records.emplace_back(record);
    }
    return result;
}

std::shared_ptr<UIViewController> ScriptedServer::loginController(LoginHandler handler) {
    login = std::move(handler);
    loginScreen = make<UIViewController>();
    return loginScreen;
}

void ScriptedServer::cancelAll() {
    for (const Call& call : std::exchange(calls, {})) call.handler(std::nullopt, "cancelled");
}

void ScriptedServer::record(Call call) {
    call.cameFromMainThread = !RunLoop::hasMain() || NSThread::isMainThread();
    const bool isOnMainThread = call.cameFromMainThread;
    // Shared, so that the handler has no copy on the thread that sent it.
    const auto keep = [this, sent = std::make_shared<Call>(std::move(call))] {
        paths.push_back(sent->path);
        calls.push_back(std::move(*sent));
    };
    isOnMainThread ? keep() : RunLoop::main().perform(keep);
}

void ScriptedServer::request(const std::string& path, AnswerHandler handler) {
    record({Method::get, path, {}, {}, std::move(handler), {}});
}

void ScriptedServer::postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) {
    record({Method::form, path, fields, {}, std::move(handler), {}});
}

std::shared_ptr<Transfer> ScriptedServer::postManyDataURL(const std::string& path, const UploadBody& body,
                                                          AnswerHandler handler, ProgressHandler progress) {
    record({Method::multipart, path, {}, body, std::move(handler), std::move(progress)});
    return nullptr;
}

Data ScriptedServer::request(const std::string& url, OstrelRequestManager::Handler handler) {
    const std::lock_guard lock(mediaMutex_);
    mediaCalls_.emplace_back(url, std::move(handler));
    const auto cached = cachedMedia.find(url);
    return cached == cachedMedia.end() ? Data() : cached->second;
}

std::vector<std::string> ScriptedServer::mediaUrls() {
    EXPECT_TRUE(NSThread::waitForAll(10));
    const std::lock_guard lock(mediaMutex_);
    std::vector<std::string> urls;
    for (const auto& [url, handler] : mediaCalls_) urls.push_back(url);
    return urls;
}

void ScriptedServer::answerMedia(const std::string& url, const Data& data) {
    EXPECT_TRUE(NSThread::waitForAll(10));
    std::unique_lock lock(mediaMutex_);
    const auto call = std::ranges::find_if(mediaCalls_, [&](const auto& each) { return each.first == url; });
    ASSERT_NE(call, mediaCalls_.end()) << "no request waits for " << url;
    const OstrelRequestManager::Handler handler = std::move(call->second);
    mediaCalls_.erase(call);
    lock.unlock();
    const bool loaded = !data.isNull();
    handler(data, loaded, loaded ? std::nullopt : std::optional<std::string>("HTTP 404 Not Found"));
}

void ScriptedServer::loadUserFace(const std::string& userId, FaceHandler handler) {
    faces.push_back(userId);
    faceHandlers[userId].push_back(std::move(handler));
}

}  // namespace ostrel
