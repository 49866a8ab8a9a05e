#pragma once

#include "bench/support/SilentServer.h"

#include <memory>
#include <string>
#include <vector>

namespace ostrel {

/// A server framework without a server that answers every list request in the next turn with the same records.
class BenchServer final : public SilentServer {
public:
    /// `count` records; beyond 10,000 they repeat.
    explicit BenchServer(std::size_t count);

    std::shared_ptr<const OstrelServerHtmlResultObject> parseResult(const std::string&) override { return result_; }

    std::shared_ptr<const OstrelServerUserObject> currentUser() const override { return user_; }
    void request(const std::string& path, AnswerHandler handler) override;

private:
    std::shared_ptr<const OstrelServerHtmlResultObject> result_;
    std::shared_ptr<const OstrelServerUserObject> user_ = std::make_shared<OstrelServerUserObject>();
};

}  // namespace ostrel
