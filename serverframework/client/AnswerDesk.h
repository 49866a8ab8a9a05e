#pragma once

#include "serverframework/client/ServerResult.h"
#include "serverframework/http/HttpTransfer.h"
#include "serverframework/http/SerialWorker.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// An answer as the handlers see it.
struct JudgedAnswer {
    /// The body as it arrived, invalid UTF-8 shown as U+FFFD. Absent when a request failed before any of it came.
    std::optional<std::string> text;
    /// Absent when the request went well and its status is below 400.
    std::optional<std::string> error;
    /// The parsed form of `text`; null when there is none.
    std::shared_ptr<const ServerResult> result;
    /// `text` as JSON: absent when it is none, and then why.
    Value document;
    std::string documentError;
    long status = 0;
    bool setsCookies = false;
};

using JudgedHandler = std::function<void(const JudgedAnswer&)>;

/// Judges and parses arrived answers on a thread of its own and hands them to their handlers on the main thread. Big
/// buffers are freed on that thread, too. Shared, so that answers still waiting in the main run loop are delivered after
/// the framework has gone.
class AnswerDesk final : public std::enable_shared_from_this<AnswerDesk> {
public:
    /// Calls `handler` once on the main thread, in a later turn. `handler` lives and ends on the main thread; while the
    /// transfer runs it is kept in `Ticket`. Any thread.
    struct Ticket {
        JudgedHandler handler;
        ProgressHandler progress;
    };
    void deliver(HttpAnswer answer, std::shared_ptr<Ticket> ticket);

    /// The parsed form of `text`: the ready one when `text` is the very object handed to the handler that is running on
    /// the main thread, else parsed on the spot. Any thread.
    std::shared_ptr<const ServerResult> parse(const std::string& text);

    /// Delivers what has arrived to the run loop and ends the thread.
    void stop() { worker_.stop(); }

    std::uint64_t parsedAhead() const { return parsedAhead_; }
    std::uint64_t parsedOnTheSpot() const { return parsedOnTheSpot_; }

private:
    struct Delivery {
        JudgedAnswer answer;
        const Delivery* outer = nullptr;
    };

    /// Handing over while the main thread runs the handler; the deliveries below it are handlers that run a nested loop.
    void handOver(std::shared_ptr<Delivery> delivery, const JudgedHandler& handler);

    /// Main thread.
    const Delivery* current_ = nullptr;
    /// Counters only; they order nothing.
    std::atomic<std::uint64_t> parsedAhead_{0};
    std::atomic<std::uint64_t> parsedOnTheSpot_{0};
    SerialWorker worker_;
};

/// The answer with its texts and error sentence. A failed transfer is an error whatever its status; a status of 400 and
/// above is one, with the server's own sentence when it gives one.
JudgedAnswer judge(HttpAnswer answer);

}  // namespace ostrel
