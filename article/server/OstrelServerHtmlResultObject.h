#pragma once

#include "platform/foundation/values/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// One answer text, parsed by the server framework. Also made when the server reported an error.
class OstrelServerHtmlResultObject {
public:
    virtual ~OstrelServerHtmlResultObject() = default;

    /// Parses `html`; never null. An answer that cannot be read has an `errString` saying so.
    static std::shared_ptr<const OstrelServerHtmlResultObject> initWithHtml(const std::string& html);

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
