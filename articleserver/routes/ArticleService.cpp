#include "articleserver/routes/ArticleService.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/ArticleServiceParts.h"

#include <sodium.h>

#include <algorithm>
#include <array>

namespace articleserver {

namespace {

constexpr std::string_view sessionCookieName = "ostrel_session";

template <typename Duration>
ServerTime milliseconds(Duration duration) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(duration).count();
}

}  // namespace

/// A method and a path with its handler. The path is prefix + variable + suffix; a variable is not empty and
/// has no slash.
struct ArticleService::Route {
    enum class Variable { none, number, text };
    enum class Effect { reads, changes };

    std::string_view method;
    std::string_view prefix;
    Variable variable;
    std::string_view suffix;
    Effect effect;
    std::size_t maximumBody;
    WebReply (ArticleService::*handler)(RequestContext&);
    /// Set for a route whose body arrives in pieces: admits or refuses the body.
    WebIntake (ArticleService::*admit)(RequestContext&, std::uint64_t length) = nullptr;

    std::optional<std::string_view> match(std::string_view path) const {
        if (variable == Variable::none) {
            return path == prefix ? std::optional<std::string_view>("") : std::nullopt;
        }
        if (path.size() <= prefix.size() + suffix.size() || !path.starts_with(prefix) || !path.ends_with(suffix)) {
            return std::nullopt;
        }
        path.remove_prefix(prefix.size());
        path.remove_suffix(suffix.size());
        bool isNumber = path.find_first_not_of("0123456789") == std::string_view::npos;
        if (path.find('/') != std::string_view::npos || (variable == Variable::number && !isNumber)) {
            return std::nullopt;
        }
        return path;
    }
};

struct ArticleServiceRoutes {
    using Route = ArticleService::Route;
    using Variable = Route::Variable;
    using Effect = Route::Effect;
    using Service = ArticleService;

    static constexpr std::size_t none = 0;

    static constexpr std::array<Route, 26> all = {{
        {"GET", "/article/articles_json.html", Variable::none, "", Effect::reads, none, &Service::listArticles},
        {"GET", "/article/my_articles_json.html", Variable::none, "", Effect::reads, none, &Service::listMyArticles},
        {"GET", "/article/remove", Variable::none, "", Effect::changes, none, &Service::removeArticle},
        {"GET", "/article/like_article_json.html", Variable::none, "", Effect::changes, none, &Service::likeArticle},
        {"GET", "/article/article_", Variable::number, "_json.html", Effect::reads, none, &Service::loadArticle},
        {"POST", "/article/json_add_comment.html", Variable::none, "", Effect::changes, ServerLimits::commentForm,
         &Service::addComment},
        {"POST", "/article/update_article_json.html", Variable::none, "", Effect::changes, ServerLimits::articleForm,
         &Service::writeArticle},
        {"POST", "/article/image_update", Variable::none, "", Effect::changes, none, &Service::uploadImage,
         &Service::admitImage},
        {"POST", "/article/video_update", Variable::none, "", Effect::changes, none, &Service::uploadVideo,
         &Service::admitVideo},
        {"GET", "/article/image_update", Variable::none, "", Effect::changes, none, &Service::changeImage},
        {"GET", "/article/video_update", Variable::none, "", Effect::changes, none, &Service::changeVideo},
        {"GET", "/article/image_remove", Variable::none, "", Effect::changes, none, &Service::removeImage},
        {"GET", "/article/video_remove", Variable::none, "", Effect::changes, none, &Service::removeVideo},
        {"GET", "/article/comments_json.html", Variable::none, "", Effect::reads, none, &Service::olderComments},
        {"POST", "/account/notify", Variable::none, "", Effect::changes, ServerLimits::notificationForm,
         &Service::notify},
        {"GET", "/account/notifications", Variable::none, "", Effect::reads, none, &Service::listNotifications},
        {"POST", "/account/notifications_read", Variable::none, "", Effect::changes, ServerLimits::accountForm,
         &Service::markNotificationsRead},
        {"POST", "/account/sign_up", Variable::none, "", Effect::changes, ServerLimits::accountForm, &Service::signUp},
        {"POST", "/account/sign_in", Variable::none, "", Effect::changes, ServerLimits::accountForm, &Service::signIn},
        {"POST", "/account/sign_out", Variable::none, "", Effect::changes, ServerLimits::accountForm,
         &Service::signOut},
        {"GET", "/account/me", Variable::none, "", Effect::reads, none, &Service::currentUser},
        {"GET", "/account/avatar/", Variable::number, "", Effect::reads, none, &Service::avatar},
        {"POST", "/account/avatar", Variable::none, "", Effect::changes, ServerLimits::avatarBody,
         &Service::uploadAvatar},
        {"GET", "/media/", Variable::text, "", Effect::reads, none, &Service::mediaFile},
        {"GET", "/article/", Variable::number, "", Effect::reads, none, &Service::publicPage},
        {"GET", "/article.css", Variable::none, "", Effect::reads, none, &Service::styleSheet},
    }};
};

/// The result of the search for a route: the route, or the methods that the path allows.
struct ArticleService::Routing {
    const Route* route = nullptr;
    std::string variable;
    std::string allowedMethods;
};

ArticleService::ArticleService(ArticleStore& store, MediaFolder& media, std::string publicUrl,
                               std::function<ServerTime()> now)
    : store_(store),
      media_(media),
      publicUrl_(std::move(publicUrl)),
      now_(std::move(now)),
      signInsByName_(ServerLimits::failedSignInsPerNameAndAddress, milliseconds(ServerLimits::attemptWindow),
                     ServerLimits::rememberedAttempters),
      signInsByAddress_(ServerLimits::failedSignInsPerAddress, milliseconds(ServerLimits::attemptWindow),
                        ServerLimits::rememberedAttempters),
      signUps_(ServerLimits::signUpsPerAddress, milliseconds(ServerLimits::attemptWindow),
               ServerLimits::rememberedAttempters),
      visitors_(ServerLimits::newVisitorsPerAddress, milliseconds(ServerLimits::attemptWindow),
                ServerLimits::rememberedAttempters),
      comments_(ServerLimits::commentsPerAuthor, milliseconds(ServerLimits::attemptWindow),
                ServerLimits::rememberedAttempters),
      notifications_(ServerLimits::notificationsPerSender, milliseconds(ServerLimits::attemptWindow),
                     ServerLimits::rememberedAttempters),
      articles_(ServerLimits::articlesPerAuthor, milliseconds(ServerLimits::attemptWindow),
                ServerLimits::rememberedAttempters),
      ingest_(media) {}

ArticleService::Routing ArticleService::routeOf(const WebRequest& request) const {
    Routing routing;
    for (const Route& route : ArticleServiceRoutes::all) {
        auto variable = route.match(request.path);
        if (!variable) continue;
        // HEAD is a safe method (RFC 9110, 9.2.1), so routes whose GET changes something refuse it.
        bool isHead = request.method == "HEAD" && route.method == "GET" && route.effect == Route::Effect::reads;
        if (request.method == route.method || isHead) {
            routing.route = &route;
            routing.variable = *variable;
            return routing;
        }
        if (!routing.allowedMethods.empty()) routing.allowedMethods += ", ";
        routing.allowedMethods += route.method;
    }
    return routing;
}

namespace {

/// A second protection beside SameSite cookies: the browser states that another site made the request (Fetch
/// Metadata).
bool isCrossSite(const WebRequest& request) { return request.header("sec-fetch-site") == "cross-site"; }

}  // namespace

WebIntake ArticleService::intake(const WebRequest& request, std::uint64_t length) {
    Routing routing = routeOf(request);
    // reply() makes the refusal of an unknown address; it does not need the body.
    if (!routing.route || !routing.route->admit) {
        if (routing.route && length <= routing.route->maximumBody) return {};
        if (routing.route) return {refusal(413, "The request is too large."), nullptr};
        return {reply(request), nullptr};
    }
    if (isCrossSite(request)) return {reply(request), nullptr};
    RequestContext context{request, routing.variable};
    return (this->*routing.route->admit)(context, length);
}

WebReply ArticleService::reply(const WebRequest& request) {
    Routing routing = routeOf(request);
    if (!routing.route) {
        if (routing.allowedMethods.empty()) return refusal(404, "There is nothing at this address.");
        WebReply reply = refusal(405, "This address does not take " + request.method + ".");
        reply.headers.emplace_back("Allow", routing.allowedMethods);
        return reply;
    }
    if (routing.route->effect == Route::Effect::changes && isCrossSite(request)) {
        return refusal(403, "Other sites cannot do this.");
    }
    RequestContext context{request, routing.variable};
    WebReply reply = (this->*routing.route->handler)(context);
    for (std::string& cookie : context.cookies) reply.headers.emplace_back("Set-Cookie", std::move(cookie));
    return reply;
}

WebReply ArticleService::refusal(int status, const std::string& text) const {
    ResultAnswer::Json body = {{"success", false}, {"error", text}, {"result", nullptr}};
    return jsonReply(status, body);
}

ServerResult<std::optional<StoredUser>> ArticleService::signedIn(RequestContext& context) {
    using Found = std::optional<StoredUser>;
    std::string_view token = context.request.cookie(sessionCookieName);
    if (!isToken(token)) return Found();
    ServerTime now = now_();
    std::string hash = tokenHash(token);
    auto session = store_.session(hash, now);
    if (!session) return session.failure();
    if (!*session) return Found();
    ServerTime life = milliseconds(ServerLimits::sessionLife);
    if ((*session)->expires < now + life - milliseconds(ServerLimits::sessionRenewal)) {
        auto extended = store_.extendSession(hash, now + life);
        if (!extended) return extended.failure();
        context.cookies.push_back(cookie(sessionCookieName, token, life / 1000));
    }
    return Found((*session)->user);
}

ServerResult<StoredUser> ArticleService::signedInOnly(RequestContext& context) {
    auto user = signedIn(context);
    if (!user) return user.failure();
    if (!*user) return ServerFailure{ServerFault::signedOut, "Sign in first."};
    return std::move(**user);
}

ServerResult<std::optional<std::int64_t>> ArticleService::pageStart(const RequestContext& context) {
    using Start = std::optional<std::int64_t>;
    auto given = context.request.query.find("before");
    if (given == context.request.query.end()) return Start();
    Start before = decimalId(given->second);
    if (!before) return ServerFailure{ServerFault::badInput, "The start of the page is not a number."};
    return before;
}

ServerResult<std::int64_t> ArticleService::articleId(const RequestContext& context) const {
    auto given = context.request.query.find("id");
    if (given == context.request.query.end()) {
        return ServerFailure{ServerFault::badInput, "The id of the article is missing."};
    }
    auto id = decimalId(given->second);
    if (!id) return ServerFailure{ServerFault::badInput, "The id of the article is not a number."};
    return *id;
}

std::string ArticleService::baseUrl(const WebRequest& request) const {
    if (!publicUrl_.empty()) return publicUrl_;
    std::string_view host = request.header("host");
    return isHostAndPort(host) ? "http://" + std::string(host) : localUrl_;
}

std::string ArticleService::cookie(std::string_view name, std::string_view value, std::int64_t seconds) const {
    std::string text(name);
    text += "=";
    text += value;
    text += "; Path=/; Max-Age=" + std::to_string(seconds) + "; HttpOnly; SameSite=Strict";
    if (publicUrl_.starts_with("https:")) text += "; Secure";
    return text;
}

WebReply jsonReply(int status, const nlohmann::ordered_json& body) {
    WebReply reply;
    reply.status = status;
    reply.contentType = "application/json; charset=utf-8";
    reply.body = body.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
    reply.headers.emplace_back("Cache-Control", "no-store");
    return reply;
}

WebReply resultReply(const ResultAnswer& answer) {
    ResultAnswer::Json body = {{"success", true},
                               {"error", nullptr},
                               {"result", answer.result},
                               {"results", answer.results},
                               {"more", answer.more}};
    if (answer.user) body["user"] = *answer.user;
    return jsonReply(200, body);
}

WebReply failureReply(const ServerFailure& failure) {
    ResultAnswer::Json body = {{"success", false}, {"error", failure.text}, {"result", nullptr}};
    WebReply reply = jsonReply(httpStatus(failure.fault), body);
    if (failure.fault == ServerFault::throttled) reply.headers.emplace_back("Retry-After", "60");
    if (failure.fault == ServerFault::busy) reply.headers.emplace_back("Retry-After", "1");
    return reply;
}

std::string newToken() {
    std::array<unsigned char, 32> bytes{};
    randombytes_buf(bytes.data(), bytes.size());
    std::array<char, 44> text{};
    sodium_bin2base64(text.data(), text.size(), bytes.data(), bytes.size(), sodium_base64_VARIANT_URLSAFE_NO_PADDING);
    return text.data();
}

std::string tokenHash(std::string_view token) {
    std::array<unsigned char, 32> hash{};
    crypto_generichash(hash.data(), hash.size(), reinterpret_cast<const unsigned char*>(token.data()), token.size(),
                       nullptr, 0);
    std::array<char, 65> digits{};
    sodium_bin2hex(digits.data(), digits.size(), hash.data(), hash.size());
    return digits.data();
}

bool isToken(std::string_view text) {
    return text.size() == 43 && std::all_of(text.begin(), text.end(), [](unsigned char character) {
               return std::isalnum(character) || character == '-' || character == '_';
           });
}

std::string entityTag(std::string_view bytes) { return "\"" + tokenHash(bytes).substr(0, 32) + "\""; }

}  // namespace articleserver
