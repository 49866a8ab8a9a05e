#include "bench/support/BenchServer.h"

#include "bench/support/SampleRecords.h"
#include "platform/foundation/runloop/RunLoop.h"

#include <algorithm>

namespace ostrel {

namespace {

constexpr std::size_t distinctRecords = 10000;

struct BenchPage final : OstrelServerHtmlResultObject {
    std::optional<std::string> none;
    std::string scalar;
    std::vector<Dictionary> records;
    const std::optional<std::string>& errString() const override { return none; }
    bool success() const override { return true; }
    const std::string& resultString() const override { return scalar; }
    const std::vector<Dictionary>& resultsArray() const override { return records; }
    const std::optional<std::string>& moreResultsURL() const override { return none; }
};

}  // namespace

BenchServer::BenchServer(std::size_t count) {
    auto page = std::make_shared<BenchPage>();
    const auto distinct = Value::parse(samplePage(std::min(count, distinctRecords), 0))["results"].elements();
    page->records.reserve(count);
    for (std::size_t i = 0; i < count; ++i) page->records.emplace_back(distinct[i % distinct.size()]);
    result_ = page;
}

void BenchServer::request(const std::string&, AnswerHandler handler) {
    RunLoop::main().perform([handler = std::move(handler)] { handler(std::string("{}"), std::nullopt); });
}

}  // namespace ostrel
