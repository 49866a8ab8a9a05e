#include "ostrelserver/HttpServer.h"

#include "platform/foundation/NSLog.h"
#include "platform/foundation/RunLoop.h"

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

class UploadTransfer final : public Transfer {
public:
    UploadTransfer(std::weak_ptr<HttpTransport> transport, std::uint64_t id)
        : transport_(std::move(transport)), id_(id) {}
    void cancel() override {
        if (const auto transport = transport_.lock()) transport->cancel(id_);
    }

private:
    const std::weak_ptr<HttpTransport> transport_;
    const std::uint64_t id_;
};

}  // namespace

HttpServer::HttpServer(Settings settings, std::shared_ptr<Session> session,
                       std::shared_ptr<HttpTransport> transport, std::shared_ptr<AnswerDesk> desk)
    : settings_(std::move(settings)),
      session_(std::move(session)),
      transport_(std::move(transport)),
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

std::uint64_t HttpServer::send(Sending sending, JudgedHandler handler) {
    const std::uint64_t generation = session_->generation();
    auto ticket = std::make_shared<AnswerDesk::Ticket>();
    ticket->handler = [server = weak_from_this(), generation, onUnauthorized = sending.onUnauthorized,
                       handler = std::move(handler)](const JudgedAnswer& answer) {
        if (const auto self = server.lock()) self->takeNote(answer, generation, onUnauthorized);
        if (handler) handler(answer);
    };
    ticket->progress = std::move(sending.progress);

    std::string error;
    const auto address = settings_.base.join(sending.path, &error);
    if (!address) {
        HttpAnswer answer;
        answer.error = error;
        desk_->deliver(std::move(answer), std::move(ticket));
        return 0;
    }
    HttpRequest request = requestTo(*address);
    if (sending.jar) request.cookies = std::move(sending.jar);
    request.headers.emplace_back("Accept: application/json");
    request.maximumBytes = settings_.maximumAnswerBytes;
    request.takesCompressed = true;
    if (sending.form) request.form = formBody(*sending.form);
    request.upload = std::move(sending.upload);
    if (ticket->progress) request.progress = [ticket](double fraction) { ticket->progress(fraction); };
    return transport_->start(std::move(request), [desk = desk_, ticket](HttpAnswer answer) {
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
    Sending sending;
    sending.path = path;
    sending.upload = std::make_shared<const UploadBody>(body);
    sending.progress = std::move(progress);
    const std::uint64_t id = send(std::move(sending), textsOnly(std::move(handler)));
    return std::make_shared<UploadTransfer>(transport_, id);
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
