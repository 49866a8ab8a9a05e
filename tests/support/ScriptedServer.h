#pragma once

#include "article/server/OstrelServerFramework.h"
#include "platform/uikit/UIViewController.h"

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {

/// The server framework of the module's tests: it records every call and answers when the test says so, in any order.
class ScriptedServer final : public OstrelServerFramework, public OstrelServer, public OstrelRequestManager {
public:
    enum class Method { get, form, multipart };
    struct Call {
        Method method;
        std::string path;
        FormFields fields;
        UploadBody body;
        AnswerHandler handler;
        ProgressHandler progress;
    };

    /// Calls not answered yet, in the order they came.
    std::deque<Call> calls;
    std::vector<std::string> paths;  ///< of every call ever
    std::vector<std::string> faces;  ///< user ids whose avatar was asked for
    std::map<std::string, std::vector<FaceHandler>> faceHandlers;
    std::shared_ptr<const OstrelServerUserObject> user;
    LoginHandler login;
    std::shared_ptr<UIViewController> loginScreen;

    void signIn() { user = std::make_shared<OstrelServerUserObject>(OstrelServerUserObject{7, "Ada"}); }
    /// Answers the oldest call that waits; it is a test's mistake when there is none.
    void answer(std::optional<std::string> text, std::optional<std::string> error = {});
    /// A result answer with these records, each given as JSON.
    static std::string page(const std::vector<std::string>& records, const std::string& more = {});

    OstrelServer& shareServer() override { return *this; }
    OstrelRequestManager& requestManager() override { return *this; }
    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string& html) override;
    std::shared_ptr<UIViewController> loginController(LoginHandler handler) override;
    std::optional<NSDate> dateFromServerText(std::string_view text) override {
        return NSDate::fromISO8601(text);
    }
    std::string encodeForQuery(std::string_view text) override { return "<" + std::string(text) + ">"; }

    std::shared_ptr<const OstrelServerUserObject> currentUser() const override { return user; }
    void request(const std::string& path, AnswerHandler handler) override;
    void postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) override;
    std::shared_ptr<Transfer> postManyDataURL(const std::string& path, const UploadBody& body,
                                              AnswerHandler handler, ProgressHandler progress) override;
    void loadUserFace(const std::string& userId, FaceHandler handler) override;
    void notificationUserID(const Value&, const std::string&, const std::string&) override {}
    Data request(const std::string&, OstrelRequestManager::Handler) override { return {}; }

private:
    void record(Call call);
};

}  // namespace ostrel
