#pragma once

#include "article/server/OstrelServerFramework.h"

#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// A server framework without a server: every list request is answered in the next turn with the same records.
class BenchServer final : public OstrelServerFramework, public OstrelServer, public OstrelRequestManager {
public:
    /// `count` records; beyond 10,000 they repeat.
    explicit BenchServer(std::size_t count);

    OstrelServer& shareServer() override { return *this; }
    OstrelRequestManager& requestManager() override { return *this; }
    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string&) override {
        return result_;
    }
    std::shared_ptr<UIViewController> loginController(LoginHandler) override { return nullptr; }
    std::optional<NSDate> dateFromServerText(std::string_view text) override {
        return NSDate::fromISO8601(text);
    }
    std::string encodeForQuery(std::string_view text) override { return std::string(text); }

    std::shared_ptr<const OstrelServerUserObject> currentUser() const override { return user_; }
    void request(const std::string& path, AnswerHandler handler) override;
    void postURL(const std::string&, const FormFields&, AnswerHandler) override {}
    std::shared_ptr<Transfer> postManyDataURL(const std::string&, const UploadBody&, AnswerHandler,
                                              ProgressHandler) override {
        return nullptr;
    }
    void loadUserFace(const std::string&, FaceHandler) override {}
    void notificationUserID(const Value&, const std::string&, const std::string&) override {}
    Data request(const std::string&, OstrelRequestManager::Handler) override { return {}; }

private:
    std::shared_ptr<const OstrelServerHtmlResultObject> result_;
    std::shared_ptr<const OstrelServerUserObject> user_ = std::make_shared<OstrelServerUserObject>();
};

}  // namespace ostrel
