#pragma once

#include "platform/foundation/values/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

class AnswerText;

/// The text of an answer as the server framework parsed it. It exists for answers that report an error too.
class OstrelServerHtmlResultObject {
public:
    virtual ~OstrelServerHtmlResultObject() = default;

    /// The result that came with `html`, or else the result that the installed server framework parses now; never null.
    /// The result of an answer that cannot be read has an `errString` that says so.
    static std::shared_ptr<const OstrelServerHtmlResultObject> initWithHtml(const AnswerText& html);

    /// Present when the server reported an error or the answer could not be read.
    virtual const std::optional<std::string>& errString() const = 0;
    virtual bool success() const = 0;
    /// The scalar result of the call, such as a count; empty when there is none.
    virtual const std::string& resultString() const = 0;
    /// One page of records; elements that are not objects are left out.
    virtual const std::vector<Dictionary>& resultsArray() const = 0;
    /// The relative path of the next page; absent when the last page was delivered.
    virtual const std::optional<std::string>& moreResultsURL() const = 0;
};

}  // namespace ostrel
