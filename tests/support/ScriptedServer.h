#pragma once

#include "article/server/OstrelServerFramework.h"
#include "platform/uikit/screens/UIViewController.h"

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace ostrel {

/// The server framework of the module's tests: it records every call and answers when the test says so, in any order. A
/// call from another thread is recorded in the next turn of the main run loop.
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
        bool cameFromMainThread = true;
    };

    struct Message {
        Value userId;
        std::string title, text;
    };

    /// Calls not answered yet, in the order they came.
    std::deque<Call> calls;
    std::vector<std::string> paths;  ///< of every call ever
    std::vector<std::string> faces;  ///< user ids whose avatar was asked for
    std::map<std::string, std::vector<FaceHandler>> faceHandlers;
    std::shared_ptr<const OstrelServerUserObject> user;
    std::vector<Message> messages;  ///< notifications to users
    /// What the media fetcher holds already, by address: returned at once. To be filled before it is asked for.
    std::map<std::string, Data> cachedMedia;
    LoginHandler login;
    std::shared_ptr<UIViewController> loginScreen;

    void signIn() { user = std::make_shared<OstrelServerUserObject>(OstrelServerUserObject{7, "Ada"}); }
    /// Answers the oldest call that waits; it is a test's mistake when there is none.
    void answer(std::optional<std::string> text, std::optional<std::string> error = {});
    /// Answers every call that waits with the error "cancelled", as a framework does that goes.
    void cancelAll();
    /// Media requests not answered yet, in the order they came; waits until the threads that send some have ended.
    std::vector<std::string> mediaUrls();
    /// Answers the oldest media request for `url`; null data: it failed. A test's mistake when none waits.
    void answerMedia(const std::string& url, const Data& data);
    /// A result answer with these records, each given as JSON.
    static std::string page(const std::vector<std::string>& records, const std::string& more = {});

    OstrelServer& shareServer() override { return *this; }
    OstrelRequestManager& requestManager() override { return *this; }
    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string& html) override;
    std::shared_ptr<UIViewController> loginController(LoginHandler handler) override;
    std::optional<NSDate> dateFromServerText(std::string_view text) override { return NSDate::fromISO8601(text); }
    std::string encodeForQuery(std::string_view text) override { return "<" + std::string(text) + ">"; }

    std::shared_ptr<const OstrelServerUserObject> currentUser() const override { return user; }
    void request(const std::string& path, AnswerHandler handler) override;
    void postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) override;
    std::shared_ptr<Transfer> postManyDataURL(const std::string& path, const UploadBody& body, AnswerHandler handler,
                                              ProgressHandler progress) override;
    void loadUserFace(const std::string& userId, FaceHandler handler) override;
    void notificationUserID(const Value& userId, const std::string& title, const std::string& text) override {
        messages.push_back({userId, title, text});
    }
    /// Any thread.
    Data request(const std::string& url, OstrelRequestManager::Handler handler) override;

private:
    std::mutex mediaMutex_;
    // By address; guarded by mediaMutex_.
    std::vector<std::pair<std::string, OstrelRequestManager::Handler>> mediaCalls_;
    void record(Call call);
};

}  // namespace ostrel
