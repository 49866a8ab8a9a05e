#pragma once

#include "article/server/OstrelServerHtmlResultObject.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// A parsed result of the server: {"success", "error", "result", "results", "more"}, JSON of RFC 8259. Members that are
/// missing or have another type count as empty; see each operation. Immutable; any thread.
class ParsedAnswer final : public OstrelServerHtmlResultObject {
public:
    /// Parses a text. Never null.
    static std::shared_ptr<const ParsedAnswer> parse(std::string_view text);
    /// Reads parsed JSON. An absent `document` means that the text was no JSON; `error` then says why. Never null.
    static std::shared_ptr<const ParsedAnswer> of(const Value& document, const std::string& error);

    /// The member "error": the text of a string, the JSON of another type, absent for null. "The answer cannot be read:
    /// " and the reason when the text cannot be read.
    const std::optional<std::string>& errString() const override { return errString_; }
    /// True when the member "success" is true or a number other than 0.
    bool success() const override { return success_; }
    /// The member "result": a string unchanged, a number as its decimal text.
    const std::string& resultString() const override { return resultString_; }
    const std::vector<Dictionary>& resultsArray() const override { return resultsArray_; }
    /// The member "more"; absent when it is empty, leads to another server or has control characters.
    const std::optional<std::string>& moreResultsURL() const override { return moreResultsURL_; }

    /// False when the text is not a JSON object.
    bool isReadable() const { return static_cast<bool>(document_); }
    /// The whole answer; absent when it cannot be read.
    const Dictionary& document() const { return document_; }

    ParsedAnswer() = default;

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
