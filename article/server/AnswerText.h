#pragma once

#include "article/server/OstrelServerHtmlResultObject.h"
#include "platform/foundation/values/Value.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ostrel {

/// The text of an answer, together with its parsed form when the server framework has parsed the text before it called
/// the handler. Copies share both, so that a text which is handed on is parsed once. A framework that has only texts
/// hands over strings; their readers then parse them. There is no conversion to a string: whoever copies the characters
/// has to say so, because a copy would be parsed again. Immutable; any thread.
class AnswerText final {
public:
    /// What a server framework made of a text before it handed the text over.
    struct Parsed {
        /// Absent when the text is no JSON; `error` then says why.
        Value json;
        std::string error;
        /// Never null.
        std::shared_ptr<const OstrelServerHtmlResultObject> result;
    };

    // Not explicit: a server framework may hand over any string.
    AnswerText(std::string text) : AnswerText(std::move(text), std::nullopt) {}
    AnswerText(const char* text) : AnswerText(std::string(text)) {}
    AnswerText(std::string text, std::optional<Parsed> parsed)
        : content_(std::make_shared<const Content>(Content{std::move(text), std::move(parsed)})) {}

    /// Valid as long as any copy lives.
    const std::string& string() const { return content_->text; }

    /// Null when the server framework handed over the text alone.
    const Parsed* parsed() const { return content_->parsed ? &*content_->parsed : nullptr; }
    /// The text as JSON, parsed now unless it was parsed before. Absent when it is no JSON; `error`, when given, then
    /// gets a sentence.
    Value json(std::string* error = nullptr) const {
        if (!content_->parsed) return Value::parse(content_->text, error);
        if (error) *error = content_->parsed->error;
        return content_->parsed->json;
    }

    friend bool operator==(const AnswerText& text, std::string_view other) { return text.string() == other; }

private:
    struct Content {
        std::string text;
        std::optional<Parsed> parsed;
    };
    std::shared_ptr<const Content> content_;
};

}  // namespace ostrel
