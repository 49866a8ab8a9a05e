#include "serverframework/HttpServerFramework.h"

#include "platform/foundation/values/Object.h"
#include "serverframework/account/Session.h"
#include "serverframework/client/Accounts.h"
#include "serverframework/client/AnswerDesk.h"
#include "serverframework/client/HttpServerConnection.h"
#include "serverframework/client/Notifications.h"
#include "serverframework/http/HttpTransport.h"
#include "serverframework/http/UploadQueue.h"
#include "serverframework/http/WebAddress.h"
#include "serverframework/login/LoginViewController.h"
#include "serverframework/media/MediaFetcher.h"

#include <utility>

namespace ostrel {

struct HttpServerFramework::Parts {
    std::shared_ptr<HttpTransport> transport;
    std::shared_ptr<UploadQueue> uploads;
    std::shared_ptr<AnswerDesk> desk;
    std::shared_ptr<Session> session;
    std::shared_ptr<HttpServerConnection> server;
    std::shared_ptr<MediaFetcher> media;
    std::shared_ptr<Accounts> accounts;
    std::shared_ptr<Notifications> notifications;
};

std::shared_ptr<HttpServerFramework> HttpServerFramework::create(Options options, std::string* error) {
    const auto base = BaseAddress::parse(options.baseAddress, error);
    if (!base) return nullptr;
    const Limits& limits = options.limits;
    if (!options.sessionStore) options.sessionStore = std::make_shared<MemorySessionStore>();

    const std::string folder = options.mediaCacheFolder.value_or(MediaDiskCache::defaultFolder());
    std::unique_ptr<MediaDiskCache> disk;
    if (!folder.empty()) disk = std::make_unique<MediaDiskCache>(folder, limits.mediaDisk);

    auto parts = std::make_unique<Parts>();
    parts->transport = std::make_shared<HttpTransport>(limits.transport);
    parts->uploads = std::make_shared<UploadQueue>(limits.uploads);
    parts->desk = std::make_shared<AnswerDesk>();
    parts->session = std::make_shared<Session>(base->origin(), options.sessionStore);
    parts->server = make<HttpServerConnection>(
        HttpServerConnection::Settings{*base, options.userAgent, limits.requests, limits.faces}, parts->session,
        parts->transport, parts->uploads, parts->desk);
    parts->media = std::make_shared<MediaFetcher>(limits.media, options.userAgent, parts->transport, std::move(disk));
    parts->accounts = std::make_shared<Accounts>(parts->server, parts->session);
    parts->notifications = std::make_shared<Notifications>(parts->server, parts->session);
    return std::make_shared<HttpServerFramework>(std::move(parts));
}

HttpServerFramework::HttpServerFramework(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

HttpServerFramework::~HttpServerFramework() {
    // In this order every answer, even a cancelled one, has reached the main run loop before the desk stops.
    parts_->uploads->stop();
    parts_->transport->stop();
    parts_->desk->stop();
}

void HttpServerFramework::signIn(const std::string& name, const std::string& password, SignInHandler handler) {
    parts_->accounts->signIn(name, password, std::move(handler));
}

void HttpServerFramework::signUp(const std::string& name, const std::string& password, SignInHandler handler) {
    parts_->accounts->signUp(name, password, std::move(handler));
}

SignInService& HttpServerFramework::signInService() { return *parts_->accounts; }

void HttpServerFramework::signOut() { parts_->accounts->signOut(); }

void HttpServerFramework::restoreSession(SignInHandler handler) { parts_->accounts->restore(std::move(handler)); }

void HttpServerFramework::loadNotifications(const std::optional<std::string>& next, NotificationsHandler handler) {
    parts_->notifications->load(next, std::move(handler));
}

void HttpServerFramework::markNotificationsRead(std::int64_t upTo, UnreadHandler handler) {
    parts_->notifications->markRead(upTo, std::move(handler));
}

OstrelServer& HttpServerFramework::shareServer() { return *parts_->server; }

OstrelRequestManager& HttpServerFramework::requestManager() { return *parts_->media; }

std::shared_ptr<const OstrelServerHtmlResultObject> HttpServerFramework::parseResult(const std::string& html) {
    return ParsedAnswer::parse(html);
}

std::shared_ptr<UIViewController> HttpServerFramework::loginController(LoginHandler handler) {
    return make<LoginViewController>(parts_->accounts, std::move(handler));
}

std::optional<NSDate> HttpServerFramework::dateFromServerText(std::string_view text) {
    return NSDate::fromISO8601(text);
}

std::string HttpServerFramework::encodeForQuery(std::string_view text) { return percentEncoded(text); }

}  // namespace ostrel
