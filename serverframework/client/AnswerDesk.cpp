#include "serverframework/client/AnswerDesk.h"

#include "platform/foundation/runloop/RunLoop.h"
#include "platform/foundation/values/PreparedText.h"
#include "platform/foundation/values/Text.h"

#include <utility>

namespace ostrel {

namespace {

/// Invalid bytes become U+FFFD, one each, so that what is left of a damaged answer can still be looked at.
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
    if (isText && !answer.body.empty()) {
        judged.document = Value::parse(answer.body, &judged.documentError);
        judged.result = ServerResult::of(judged.document, judged.documentError);
    }

    const bool refused = answer.status >= 400;
    if (!answer.cancelled && refused && judged.result && judged.result->isReadable() &&
        judged.result->errString().value_or("") != "") {
        // Also when the transfer failed: a server may refuse an upload and close before it has read all of it.
        judged.error = judged.result->errString();
    } else if (!answer.error.empty()) {
        judged.error = std::move(answer.error);
    } else if (refused) {
        judged.error = statusSentence(answer);
    } else if (!isText) {
        judged.error = "The answer is not text in UTF-8.";
    }
    if (!answer.body.empty() || !judged.error)
        judged.text = isText ? std::move(answer.body) : repaired(answer.body);
    return judged;
}

void AnswerDesk::deliver(HttpAnswer answer, std::shared_ptr<Ticket> ticket) {
    // Shared because a task is copyable; each step moves its content on.
    auto arrived = std::make_shared<HttpAnswer>(std::move(answer));
    worker_.post([this, self = weak_from_this(), arrived, ticket = std::move(ticket)]() mutable {
        auto delivery = std::make_shared<Delivery>();
        delivery->answer = judge(std::move(*arrived));
        if (delivery->answer.result) ++parsedAhead_;
        if (!RunLoop::hasMain()) return;
        RunLoop::main().perform(
            [self = std::move(self), delivery = std::move(delivery), ticket = std::move(ticket)]() mutable {
                // The handlers end here, on the main thread, whoever else still holds the ticket.
                const JudgedHandler handler = std::exchange(ticket->handler, nullptr);
                const ProgressHandler progress = std::exchange(ticket->progress, nullptr);
                if (!handler) return;
                if (const auto desk = self.lock()) {
                    desk->handOver(std::move(delivery), handler);
                } else {
                    handler(delivery->answer);
                }
            });
    });
}

void AnswerDesk::handOver(std::shared_ptr<Delivery> delivery, const JudgedHandler& handler) {
    const JudgedAnswer& answer = delivery->answer;
    {
        std::optional<PreparedText> prepared;
        if (answer.text && answer.result)
            prepared.emplace(*answer.text, answer.document, answer.documentError);
        delivery->outer = std::exchange(current_, delivery.get());
        handler(answer);
        current_ = delivery->outer;
    }
    worker_.post([delivery = std::move(delivery)] {});
}

std::shared_ptr<const ServerResult> AnswerDesk::parse(const std::string& text) {
    if (RunLoop::main().isMainThread()) {
        for (const Delivery* delivery = current_; delivery; delivery = delivery->outer) {
            const JudgedAnswer& answer = delivery->answer;
            if (answer.text && answer.result && answer.text->data() == text.data() &&
                answer.text->size() == text.size()) {
                return answer.result;
            }
        }
    }
    ++parsedOnTheSpot_;
    return ServerResult::parse(text);
}

}  // namespace ostrel
