#pragma once

#include "article/server/AnswerText.h"
#include "serverframework/client/ParsedAnswer.h"
#include "serverframework/http/HttpTransfer.h"
#include "serverframework/http/SerialWorker.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// An answer as the client's own requests get it.
struct JudgedAnswer {
    /// The body as it arrived, with its parsed form; invalid bytes are shown as U+FFFD. Absent when a request failed
    /// before any of its body came.
    std::optional<AnswerText> text;
    /// Absent when the request went well and its status is below 400.
    std::optional<std::string> error;
    /// The result in `text`; null when the body is empty or no text in UTF-8.
    std::shared_ptr<const ParsedAnswer> result;
    long status = 0;
    bool setsCookies = false;
};

using JudgedHandler = std::function<void(const JudgedAnswer&)>;

/// Judges and parses the answers that arrive on a thread of its own, calls their handlers on the main thread, and frees
/// the answers on its own thread again. Answers that wait in the main run loop are delivered even after this object has
/// gone.
class AnswerDesk final : public std::enable_shared_from_this<AnswerDesk> {
public:
    /// The handlers of one request. Other threads only keep them: they are called, except for `progress`, and destroyed
    /// on the main thread.
    struct Ticket {
        JudgedHandler handler;
        ProgressHandler progress;
    };
    /// Calls the ticket's handler once on the main thread, in a later turn. Any thread.
    void deliver(HttpAnswer answer, std::shared_ptr<Ticket> ticket);

    /// Hands the answers that have arrived to the run loop and ends the thread.
    void stop() { worker_.stop(); }

private:
    SerialWorker worker_;
};

/// Judges an answer. A failed transfer and a status of 400 or more are errors; the error is the server's own sentence
/// when a refusal has one.
JudgedAnswer judge(HttpAnswer answer);

}  // namespace ostrel
