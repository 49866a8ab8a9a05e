#include "serverframework/client/ParsedAnswer.h"

#include "serverframework/http/ClientLimits.h"
#include "serverframework/http/WebAddress.h"

#include <utility>

namespace ostrel {

std::shared_ptr<const ParsedAnswer> ParsedAnswer::parse(std::string_view text) {
    std::string error;
    const Value document = Value::parse(text, &error);
    return of(document, error);
}

std::shared_ptr<const ParsedAnswer> ParsedAnswer::of(const Value& document, const std::string& error) {
    auto result = std::make_shared<ParsedAnswer>();
    if (document.isAbsent()) {
        result->refuse(error.empty() ? "it is not JSON" : error);
    } else if (!document.isDictionary()) {
        result->refuse("it is not a JSON object");
    } else {
        result->read(document);
    }
    return result;
}

void ParsedAnswer::refuse(std::string_view reason) {
    document_ = {};
    errString_ = "The answer cannot be read: ";
    errString_->append(reason);
    if (errString_->back() != '.') *errString_ += '.';
}

void ParsedAnswer::read(const Value& document) {
    document_ = Dictionary(document);
    const Value results = document["results"];
    if (results.isArray()) {
        if (results.count() > RequestLimits::maximumRecords) {
            refuse("it has more than " + std::to_string(RequestLimits::maximumRecords) + " records");
            return;
        }
        std::vector<Value> elements = results.elements();
        resultsArray_.reserve(elements.size());
        for (Value& element : elements) {
            if (Dictionary record(std::move(element)); record) resultsArray_.push_back(std::move(record));
        }
    }
    const Value error = document["error"];
    if (error.isString()) {
        errString_ = std::string(error.string());
    } else if (!error.isAbsent() && !error.isNull()) {
        errString_ = error.json();
    }
    success_ = document["success"].boolean();
    const Value result = document["result"];
    if (result.isString() || result.isNumber()) resultString_ = result.text().value_or("");
    const Value more = document["more"];
    if (more.isString() && !more.string().empty() && !leavesServer(more.string()) &&
        !hasControlCharacters(more.string())) {
        moreResultsURL_ = std::string(more.string());
    }
}

}  // namespace ostrel
