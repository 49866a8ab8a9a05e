#pragma once

#include "article/server/OstrelServerFramework.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A server framework without a server: no user is signed in, and no request is answered. Benchmarks override the
/// answers that they measure with.
class SilentServer : public OstrelServerFramework, public OstrelServer, public OstrelRequestManager {
public:
    OstrelServer& shareServer() override { return *this; }
    OstrelRequestManager& requestManager() override { return *this; }
    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string&) override { return nullptr; }
    std::shared_ptr<UIViewController> loginController(LoginHandler) override { return nullptr; }
    std::optional<NSDate> dateFromServerText(std::string_view text) override { return NSDate::fromISO8601(text); }
    std::string encodeForQuery(std::string_view text) override { return std::string(text); }
    std::shared_ptr<const OstrelServerUserObject> currentUser() const override { return nullptr; }
    void request(const std::string&, AnswerHandler) override {}
    void postURL(const std::string&, const FormFields&, AnswerHandler) override {}
    std::shared_ptr<Transfer> postManyDataURL(const std::string&, const UploadBody&, AnswerHandler,
                                              ProgressHandler) override {
        return nullptr;
    }
    void loadUserFace(const std::string&, FaceHandler) override {}
    void notificationUserID(const Value&, const std::string&, const std::string&) override {}
    Data request(const std::string&, OstrelRequestManager::Handler) override { return {}; }
};

}  // namespace ostrel
