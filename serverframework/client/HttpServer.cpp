#include "serverframework/client/HttpServer.h"

#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/runloop/RunLoop.h"

#include <random>
#include <utility>

namespace ostrel {

namespace {

std::string formBody(const FormFields& fields) {
    std::string body;
    for (const auto& [name, value] : fields) {
        if (!body.empty()) body += '&';
        body.append(percentEncoded(name)).append("=").append(percentEncoded(value));
    }
    return body;
}

JudgedHandler textsOnly(AnswerHandler handler) {
    if (!handler) return nullptr;
    return [handler = std::move(handler)](const JudgedAnswer& answer) { handler(answer.text, answer.error); };
}

/// libcurl takes at most 1 MiB of a request's head; the rest is left to the headers.
constexpr std::size_t longestAddress = 1'000'000;

/// What stands for the answer of a request that was not sent.
HttpAnswer refusalAnswer(std::string error) {
    HttpAnswer answer;
    answer.cancelled = error == cancelledText;
    answer.error = std::move(error);
    return answer;
}

/// A header of its own for each POST, by which a server knows one that arrives twice: libcurl sends a request once more
/// when a kept connection turns out to be closed.
std::string idempotencyKeyLine() {
    static constexpr char digits[] = "0123456789abcdef";
    constexpr int length = 32;
    std::random_device device;
    std::string line = "Idempotency-Key: \"";
    for (int i = 0; i < length; ++i) line += digits[device() % 16];
    return line + "\"";
}

}  // namespace

HttpServer::HttpServer(Settings settings, std::shared_ptr<Session> session,
                       std::shared_ptr<HttpTransport> transport, std::shared_ptr<UploadQueue> uploads,
                       std::shared_ptr<AnswerDesk> desk)
    : settings_(std::move(settings)),
      session_(std::move(session)),
      transport_(std::move(transport)),
      uploads_(std::move(uploads)),
      desk_(std::move(desk)) {}

void HttpServer::initialise() {
    faces_ = std::make_shared<FaceLoader>(
        settings_.faces, [server = weak_from_this()](const std::string& userId, const std::string& entityTag,
                                                     std::function<void(HttpAnswer)> done) {
            if (const auto self = server.lock()) self->fetchFace(userId, entityTag, std::move(done));
        });
}

HttpRequest HttpServer::requestTo(std::string address) const {
    HttpRequest request;
    request.address = std::move(address);
    request.userAgent = settings_.userAgent;
    request.cookies = session_->jar();
    request.usesProxy = !isLoopbackHost(settings_.base.host());
    return request;
}

HttpRequest HttpServer::answeredRequest(std::string address) const {
    HttpRequest request = requestTo(std::move(address));
    request.headers.emplace_back("Accept: application/json");
    request.maximumBytes = settings_.maximumAnswerBytes;
    request.takesCompressed = true;
    return request;
}

HttpServer::Ticket HttpServer::ticketFor(OnUnauthorized onUnauthorized, JudgedHandler handler) {
    auto ticket = std::make_shared<AnswerDesk::Ticket>();
    ticket->handler = [server = weak_from_this(), generation = session_->generation(), onUnauthorized,
                       handler = std::move(handler)](const JudgedAnswer& answer) {
        if (const auto self = server.lock()) self->takeNote(answer, generation, onUnauthorized);
        if (handler) handler(answer);
    };
    return ticket;
}

std::optional<std::string> HttpServer::addressOf(const std::string& path, std::string* error) const {
    auto address = settings_.base.join(path, error);
    if (!address || address->size() <= longestAddress) return address;
    *error = "The address of the request is too long.";
    return std::nullopt;
}

void HttpServer::send(Sending sending, JudgedHandler handler) {
    const Ticket ticket = ticketFor(sending.onUnauthorized, std::move(handler));
    std::string error;
    const auto address = addressOf(sending.path, &error);
    if (!address) return desk_->deliver(refusalAnswer(std::move(error)), ticket);
    HttpRequest request = answeredRequest(*address);
    if (sending.jar) request.cookies = std::move(sending.jar);
    if (sending.form) {
        request.form = formBody(*sending.form);
        request.headers.push_back(idempotencyKeyLine());
    }
    transport_->start(std::move(request), [desk = desk_, ticket](HttpAnswer answer) {
        desk->deliver(std::move(answer), ticket);
    });
}

void HttpServer::takeNote(const JudgedAnswer& answer, std::uint64_t generation,
                          OnUnauthorized onUnauthorized) {
    if (answer.status == 401 && onUnauthorized == OnUnauthorized::endSession && session_->currentUser() &&
        session_->generation() == generation) {
        session_->end();
    } else if (answer.setsCookies) {
        session_->keepCookies();
    }
}

void HttpServer::request(const std::string& path, AnswerHandler handler) {
    Sending sending;
    sending.path = path;
    send(std::move(sending), textsOnly(std::move(handler)));
}

void HttpServer::postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) {
    Sending sending;
    sending.path = path;
    sending.form = fields;
    send(std::move(sending), textsOnly(std::move(handler)));
}

std::shared_ptr<Transfer> HttpServer::postManyDataURL(const std::string& path, const UploadBody& body,
                                                      AnswerHandler handler, ProgressHandler progress) {
    const Ticket ticket = ticketFor(OnUnauthorized::endSession, textsOnly(std::move(handler)));
    ticket->progress = std::move(progress);
    UploadQueue::Order order;
    order.body = std::make_shared<const UploadBody>(body);
    order.refuse = [desk = desk_, ticket](const std::string& error) {
        desk->deliver(refusalAnswer(error), ticket);
    };
    order.cancel = [transport = transport_](std::uint64_t number) { transport->cancel(number); };
    order.send = [server = weak_from_this(), desk = desk_, path, ticket,
                  generation = session_->generation()](std::shared_ptr<PreparedUpload> prepared,
                                                       ProgressHandler shown, Task ended) -> std::uint64_t {
        if (const auto self = server.lock())
            return self->sendUpload({path, ticket, generation}, std::move(prepared), std::move(shown),
                                    std::move(ended));
        ended();
        desk->deliver(refusalAnswer(cancelledText), ticket);
        return 0;
    };
    return uploads_->add(std::move(order));
}

std::uint64_t HttpServer::sendUpload(const UploadTarget& target, std::shared_ptr<PreparedUpload> prepared,
                                     ProgressHandler shown, Task ended) {
    const Ticket& ticket = target.ticket;
    // It has ended before its handler can run: who looks at the work in progress then finds it gone.
    const auto unsent = [&](std::string error) -> std::uint64_t {
        ended();
        desk_->deliver(refusalAnswer(std::move(error)), ticket);
        return 0;
    };
    // What waited for its turn must not go out in the name of somebody else.
    if (session_->generation() != target.generation) return unsent(cancelledText);
    std::string error;
    const auto address = addressOf(target.path, &error);
    if (!address) return unsent(std::move(error));
    HttpRequest request = answeredRequest(*address);
    request.headers.push_back(idempotencyKeyLine());
    request.upload = std::move(prepared);
    if (shown || ticket->progress) {
        request.progress = [ticket, shown = std::move(shown)](double fraction) {
            if (shown) shown(fraction);
            if (ticket->progress) ticket->progress(fraction);
        };
    }
    return transport_->start(std::move(request),
                             [desk = desk_, ticket, ended = std::move(ended)](HttpAnswer answer) {
                                 ended();
                                 desk->deliver(std::move(answer), ticket);
                             });
}

void HttpServer::loadUserFace(const std::string& userId, FaceHandler handler) {
    // Faces are kept on the main thread; the hop also keeps the handler from being called before this returned.
    RunLoop::main().perform([faces = std::weak_ptr(faces_), userId, handler = std::move(handler)]() mutable {
        if (const auto loader = faces.lock()) {
            loader->load(userId, std::move(handler));
        } else if (handler) {
            handler(Data());
        }
    });
}

void HttpServer::fetchFace(const std::string& userId, const std::string& entityTag,
                           std::function<void(HttpAnswer)> done) {
    std::string error;
    HttpRequest request = requestTo(settings_.base.join("account/avatar/" + userId, &error).value_or(""));
    request.maximumBytes = settings_.faces.maximumFaceBytes;
    if (!entityTag.empty()) request.headers.push_back("If-None-Match: " + entityTag);
    transport_->start(std::move(request), [server = weak_from_this(), generation = session_->generation(),
                                           done = std::move(done)](HttpAnswer answer) {
        auto arrived = std::make_shared<HttpAnswer>(std::move(answer));
        if (!RunLoop::hasMain()) return;
        RunLoop::main().perform([server, generation, done, arrived] {
            JudgedAnswer note;
            note.status = arrived->status;
            note.setsCookies = arrived->setsCookies;
            if (const auto self = server.lock()) self->takeNote(note, generation, OnUnauthorized::endSession);
            done(std::move(*arrived));
        });
    });
}

void HttpServer::notificationUserID(const Value& userId, const std::string& title, const std::string& text) {
    Sending sending;
    sending.path = "account/notify";
    sending.form = FormFields{{"user_id", userId.text().value_or("")}, {"title", title}, {"text", text}};
    send(std::move(sending), [](const JudgedAnswer& answer) {
        if (answer.error) NSLog("notification error:%@", *answer.error);
    });
}

}  // namespace ostrel
