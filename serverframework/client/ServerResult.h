#pragma once

#include "article/server/OstrelServerHtmlResultObject.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A result answer of the server: {"success", "error", "result", "results", "more"}, JSON of RFC 8259. Members that are
/// missing or of another type count as empty; see each. Immutable; any thread.
class ServerResult final : public OstrelServerHtmlResultObject {
public:
    /// A page with more records than this is refused as unreadable.
    static constexpr std::size_t maximumRecords = 200'000;

    /// Parses `text`. Never null.
    static std::shared_ptr<const ServerResult> parse(std::string_view text);
    /// Reads what has been parsed; absent: the text was no JSON, and `error` says why. Never null.
    static std::shared_ptr<const ServerResult> of(const Value& document, const std::string& error);

    /// The member "error": its text, or the JSON of another type than string or null. For a text that cannot be read:
    /// "The answer cannot be read: " and why.
    const std::optional<std::string>& errString() const override { return errString_; }
    /// True for true and for numbers other than 0.
    bool success() const override { return success_; }
    /// A string as it is, a number as its decimal text.
    const std::string& resultString() const override { return resultString_; }
    const std::vector<Dictionary>& resultsArray() const override { return resultsArray_; }
    /// Absent when empty, when it leads to another server, and when it has control characters.
    const std::optional<std::string>& moreResultsURL() const override { return moreResultsURL_; }

    /// False when the text is not a JSON object.
    bool isReadable() const { return static_cast<bool>(document_); }
    /// The whole answer; absent when it cannot be read.
    const Dictionary& document() const { return document_; }

    ServerResult() = default;

private:
    void read(const Value& document);
    void refuse(std::string_view reason);

    Dictionary document_;
    std::optional<std::string> errString_;
    bool success_ = false;
    std::string resultString_;
    std::vector<Dictionary> resultsArray_;
    std::optional<std::string> moreResultsURL_;
};

}  // namespace ostrel
