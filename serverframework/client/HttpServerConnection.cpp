#include "serverframework/client/HttpServerConnection.h"

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

/// The answer of a request that was not sent.
HttpAnswer refusalAnswer(std::string error) {
    HttpAnswer answer;
    answer.cancelled = error == cancelledText;
    answer.error = std::move(error);
    return answer;
}

/// A header with a different key for each POST, by which a server recognises a request that arrives twice: libcurl
/// sends a request once more when a kept connection turns out to be closed.
std::string idempotencyKeyLine() {
    static constexpr char digits[] = "0123456789abcdef";
    constexpr int length = 32;
    std::random_device device;
    std::string line = "Idempotency-Key: \"";
    for (int i = 0; i < length; ++i) line += digits[device() % 16];
    return line + "\"";
}

}  // namespace

HttpServerConnection::HttpServerConnection(Settings settings, std::shared_ptr<Session> session,
                                           std::shared_ptr<HttpTransport> transport,
                                           std::shared_ptr<UploadQueue> uploads, std::shared_ptr<AnswerDesk> desk)
    : settings_(std::move(settings)),
      session_(std::move(session)),
      transport_(std::move(transport)),
      uploads_(std::move(uploads)),
      desk_(std::move(desk)) {}

void HttpServerConnection::initialise() {
    faces_ = std::make_shared<FaceLoader>(
        settings_.faces, [server = weak_from_this()](const std::string& userId, const std::string& entityTag,
                                                     std::function<void(HttpAnswer)> done) {
            if (const auto self = server.lock()) self->fetchFace(userId, entityTag, std::move(done));
        });
}

HttpRequest HttpServerConnection::requestTo(std::string address) const {
    HttpRequest request;
    request.address = std::move(address);
    request.userAgent = settings_.userAgent;
    request.cookies = session_->jar();
    request.usesProxy = !isLoopbackHost(settings_.base.host());
    return request;
}

HttpRequest HttpServerConnection::answeredRequest(std::string address) const {
    HttpRequest request = requestTo(std::move(address));
    request.headers.emplace_back("Accept: application/json");
    request.maximumBytes = settings_.limits.maximumAnswerBytes;
    request.takesCompressed = true;
    return request;
}

HttpServerConnection::Ticket HttpServerConnection::ticketFor(OnUnauthorized onUnauthorized, JudgedHandler handler) {
    auto ticket = std::make_shared<AnswerDesk::Ticket>();
    ticket->handler = [server = weak_from_this(), generation = session_->generation(), onUnauthorized,
                       handler = std::move(handler)](const JudgedAnswer& answer) {
        if (const auto self = server.lock()) self->takeNote(answer, generation, onUnauthorized);
        if (handler) handler(answer);
    };
    return ticket;
}

std::optional<std::string> HttpServerConnection::addressOf(const std::string& path, std::string* error) const {
    auto address = settings_.base.join(path, error);
    if (!address || address->size() <= settings_.limits.maximumAddressBytes) return address;
    *error = "The address of the request is too long.";
    return std::nullopt;
}

void HttpServerConnection::send(Sending sending, JudgedHandler handler) {
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
    transport_->start(std::move(request),
                      [desk = desk_, ticket](HttpAnswer answer) { desk->deliver(std::move(answer), ticket); });
}

void HttpServerConnection::takeNote(const JudgedAnswer& answer, std::uint64_t generation,
                                    OnUnauthorized onUnauthorized) {
    if (answer.status == 401 && onUnauthorized == OnUnauthorized::endSession && session_->currentUser() &&
        session_->generation() == generation) {
        session_->end();
    } else if (answer.setsCookies) {
        session_->keepCookies();
    }
}

void HttpServerConnection::request(const std::string& path, AnswerHandler handler) {
    Sending sending;
    sending.path = path;
    send(std::move(sending), textsOnly(std::move(handler)));
}

void HttpServerConnection::postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) {
    Sending sending;
    sending.path = path;
    sending.form = fields;
    send(std::move(sending), textsOnly(std::move(handler)));
}

std::shared_ptr<Transfer> HttpServerConnection::postManyDataURL(const std::string& path, const UploadBody& body,
                                                                AnswerHandler handler, ProgressHandler progress) {
    const Ticket ticket = ticketFor(OnUnauthorized::endSession, textsOnly(std::move(handler)));
    ticket->progress = std::move(progress);
    UploadQueue::Order order;
    order.body = std::make_shared<const UploadBody>(body);
    order.refuse = [desk = desk_, ticket](const std::string& error) { desk->deliver(refusalAnswer(error), ticket); };
    order.cancel = [transport = transport_](std::uint64_t number) { transport->cancel(number); };
    order.send = [server = weak_from_this(), desk = desk_, path, ticket, generation = session_->generation()](
                     std::shared_ptr<PreparedUpload> prepared, ProgressHandler shown, Task ended) -> std::uint64_t {
        if (const auto self = server.lock())
            return self->sendUpload({path, ticket, generation}, std::move(prepared), std::move(shown),
                                    std::move(ended));
        ended();
        desk->deliver(refusalAnswer(cancelledText), ticket);
        return 0;
    };
    return uploads_->add(std::move(order));
}

std::uint64_t HttpServerConnection::sendUpload(const UploadTarget& target, std::shared_ptr<PreparedUpload> prepared,
                                               ProgressHandler shown, Task ended) {
    const Ticket& ticket = target.ticket;
    // `ended` is called before the answer is delivered, so that the handler no longer finds the upload listed as work
    // in progress.
    const auto unsent = [&](std::string error) -> std::uint64_t {
        ended();
        desk_->deliver(refusalAnswer(std::move(error)), ticket);
        return 0;
    };
    // An upload that waited must not be sent in the name of another user.
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
    return transport_->start(std::move(request), [desk = desk_, ticket, ended = std::move(ended)](HttpAnswer answer) {
        ended();
        desk->deliver(std::move(answer), ticket);
    });
}

void HttpServerConnection::loadUserFace(const std::string& userId, FaceHandler handler) {
    // Faces are kept on the main thread. A later turn also ensures that the handler is called after this call returned.
    RunLoop::main().perform([faces = std::weak_ptr(faces_), userId, handler = std::move(handler)]() mutable {
        if (const auto loader = faces.lock()) {
            loader->load(userId, std::move(handler));
        } else if (handler) {
            handler(Data());
        }
    });
}

void HttpServerConnection::fetchFace(const std::string& userId, const std::string& entityTag,
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

void HttpServerConnection::notificationUserID(const Value& userId, const std::string& title, const std::string& text) {
    Sending sending;
    sending.path = "account/notify";
    sending.form = FormFields{{"user_id", userId.text().value_or("")}, {"title", title}, {"text", text}};
    send(std::move(sending), [](const JudgedAnswer& answer) {
        if (answer.error) NSLog("notification error:%@", *answer.error);
    });
}

}  // namespace ostrel
