#include "serverframework/client/AnswerDesk.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/Text.h"

#include <utility>

namespace ostrel {

namespace {

/// The text with U+FFFD for each invalid byte, so that the rest of a damaged answer can be read.
std::string repaired(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const std::size_t valid = validUtf8Prefix(text);
        result.append(text.substr(0, valid));
        if (valid == text.size()) break;
        result.append("\xEF\xBF\xBD");
        text.remove_prefix(valid + 1);
    }
    return result;
}

}  // namespace

JudgedAnswer judge(HttpAnswer answer) {
    JudgedAnswer judged;
    judged.status = answer.status;
    judged.setsCookies = answer.setsCookies;
    const bool isText = validUtf8Prefix(answer.body) == answer.body.size();
    std::optional<AnswerText::Parsed> parsed;
    if (isText && !answer.body.empty()) {
        parsed.emplace();
        parsed->json = Value::parse(answer.body, &parsed->error);
        judged.result = ParsedAnswer::of(parsed->json, parsed->error);
        parsed->result = judged.result;
    }

    const bool refused = answer.status >= 400;
    if (!answer.cancelled && refused && judged.result && judged.result->isReadable() &&
        judged.result->errString().value_or("") != "") {
        // The server's sentence counts even when the transfer failed: a server may refuse an upload and close the
        // connection before it has read the whole body.
        judged.error = judged.result->errString();
    } else if (!answer.error.empty()) {
        judged.error = std::move(answer.error);
    } else if (refused) {
        judged.error = statusSentence(answer);
    } else if (!isText) {
        judged.error = "The answer is not text in UTF-8.";
    }
    if (!answer.body.empty() || !judged.error)
        judged.text.emplace(isText ? std::move(answer.body) : repaired(answer.body), std::move(parsed));
    return judged;
}

void AnswerDesk::deliver(HttpAnswer answer, std::shared_ptr<Ticket> ticket) {
    // Shared because tasks must be copyable; each step moves the content on.
    auto arrived = std::make_shared<HttpAnswer>(std::move(answer));
    worker_.post([self = weak_from_this(), arrived, ticket = std::move(ticket)]() mutable {
        auto judged = std::make_shared<const JudgedAnswer>(judge(std::move(*arrived)));
        if (!RunLoop::hasMain()) return;
        RunLoop::main().perform(
            [self = std::move(self), judged = std::move(judged), ticket = std::move(ticket)]() mutable {
                // The handlers are destroyed here, on the main thread; other threads may still hold the ticket.
                const JudgedHandler handler = std::exchange(ticket->handler, nullptr);
                const ProgressHandler progress = std::exchange(ticket->progress, nullptr);
                if (handler) handler(*judged);
                if (const auto desk = self.lock()) desk->worker_.post([judged = std::move(judged)] {});
            });
    });
}

}  // namespace ostrel
