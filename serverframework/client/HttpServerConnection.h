#pragma once

#include "article/server/OstrelServer.h"
#include "serverframework/account/Session.h"
#include "serverframework/client/AnswerDesk.h"
#include "serverframework/http/HttpTransport.h"
#include "serverframework/http/UploadQueue.h"
#include "serverframework/http/WebAddress.h"
#include "serverframework/media/FaceLoader.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The connection to the application's own server: makes the requests of the boundary with the session's cookies.
class HttpServerConnection final : public OstrelServer, public std::enable_shared_from_this<HttpServerConnection> {
public:
    struct Settings {
        BaseAddress base;
        std::string userAgent;
        RequestLimits limits;
        FaceLimits faces;
    };
    enum class OnUnauthorized { endSession, keepSession };
    struct Sending {
        std::string path;
        std::optional<FormFields> form;
        OnUnauthorized onUnauthorized = OnUnauthorized::endSession;
        /// The jar to use in place of the session's; null: the session's.
        std::shared_ptr<CookieJar> jar;
    };

    HttpServerConnection(Settings settings, std::shared_ptr<Session> session, std::shared_ptr<HttpTransport> transport,
                         std::shared_ptr<UploadQueue> uploads, std::shared_ptr<AnswerDesk> desk);
    /// The second phase of construction makes the parts that refer back to this object.
    void initialise();

    /// Sends a request. Before the handler is called, a 401 answer ends the session that the request was made with,
    /// unless `onUnauthorized` says otherwise. Any thread.
    void send(Sending sending, JudgedHandler handler);

    std::shared_ptr<const OstrelServerUserObject> currentUser() const override { return session_->currentUser(); }
    void request(const std::string& path, AnswerHandler handler) override;
    void postURL(const std::string& path, const FormFields& fields, AnswerHandler handler) override;
    std::shared_ptr<Transfer> postManyDataURL(const std::string& path, const UploadBody& body, AnswerHandler handler,
                                              ProgressHandler progress) override;
    void loadUserFace(const std::string& userId, FaceHandler handler) override;
    void notificationUserID(const Value& userId, const std::string& title, const std::string& text) override;

private:
    using Ticket = std::shared_ptr<AnswerDesk::Ticket>;

    HttpRequest requestTo(std::string address) const;
    HttpRequest answeredRequest(std::string address) const;
    Ticket ticketFor(OnUnauthorized onUnauthorized, JudgedHandler handler);
    /// The absolute address of a path; absent, with a sentence in `error`, when the path is not valid or too long.
    std::optional<std::string> addressOf(const std::string& path, std::string* error) const;
    /// The path of an upload, who waits for its answer, and the session's generation when the upload was handed over.
    struct UploadTarget {
        const std::string& path;
        const Ticket& ticket;
        std::uint64_t generation;
    };
    std::uint64_t sendUpload(const UploadTarget& target, std::shared_ptr<PreparedUpload> prepared,
                             ProgressHandler shown, Task ended);
    void fetchFace(const std::string& userId, const std::string& entityTag, std::function<void(HttpAnswer)> done);
    void takeNote(const JudgedAnswer& answer, std::uint64_t generation, OnUnauthorized onUnauthorized);

    const Settings settings_;
    const std::shared_ptr<Session> session_;
    const std::shared_ptr<HttpTransport> transport_;
    const std::shared_ptr<UploadQueue> uploads_;
    const std::shared_ptr<AnswerDesk> desk_;
    std::shared_ptr<FaceLoader> faces_;
};

}  // namespace ostrel
