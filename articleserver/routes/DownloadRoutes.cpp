#include "articleserver/common/ServerLimits.h"
#include "articleserver/http/WebConditions.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/routes/ArticleServiceParts.h"

namespace articleserver {

namespace {

constexpr const char* mediaCaching = "public, max-age=31536000, immutable";
constexpr const char* avatarCaching = "public, max-age=60";
constexpr const char* pagePolicy = "default-src 'none'; img-src 'self'; media-src 'self'; style-src 'self'; "
                                   "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

/// A reply with an entity tag: the body, or 304 when the client has this body already.
WebReply taggedReply(const WebRequest& request, std::string contentType, std::string body, const char* caching) {
    WebReply reply;
    std::string tag = entityTag(body);
    reply.headers.emplace_back("ETag", tag);
    reply.headers.emplace_back("Cache-Control", caching);
    if (matchesEntityTag(request.header("if-none-match"), tag)) {
        reply.status = 304;
        return reply;
    }
    reply.contentType = std::move(contentType);
    reply.body = std::move(body);
    return reply;
}

WebReply fileReply(const WebRequest& request, const MediaFolder::File& file, const char* caching, ServerTime now) {
    const WebValidators validators{file.entityTag, file.modified};
    WebReply reply;
    reply.headers = {{"ETag", file.entityTag},
                     {"Last-Modified", httpDate(file.modified)},
                     {"Cache-Control", caching},
                     {"Accept-Ranges", "bytes"}};
    WebCondition condition = conditionOf(request, validators);
    if (condition == WebCondition::notModified) {
        reply.status = 304;
        return reply;
    }
    if (condition == WebCondition::fails) {
        WebReply refused = failureReply({ServerFault::badInput, "The file is not the one that was meant."});
        refused.status = 412;
        return refused;
    }
    reply.contentType = file.contentType;
    const WebRange range = wantedRange(request, validators, file.size, now);
    if (range.kind == RangeKind::unsatisfiable) {
        WebReply refused = failureReply({ServerFault::badInput, "The file has no such range."});
        refused.status = 416;
        refused.headers.emplace_back("Content-Range", "bytes */" + std::to_string(file.size));
        return refused;
    }
    if (range.kind == RangeKind::part) {
        reply.status = 206;
        reply.headers.emplace_back("Content-Range", "bytes " + std::to_string(range.offset) + "-" +
                                                        std::to_string(range.offset + range.length - 1) + "/" +
                                                        std::to_string(file.size));
    }
    reply.file = WebFile{file.path, range.offset, range.length};
    return reply;
}

}  // namespace

WebReply ArticleService::mediaFile(RequestContext& context) {
    auto file = media_.find(context.variable);
    if (!file) return failureReply({ServerFault::notFound, "There is no such file."});
    return fileReply(context.request, *file, mediaCaching, now_());
}

WebReply ArticleService::avatar(RequestContext& context) {
    const ServerFailure unknown{ServerFault::notFound, "There is no such user."};
    auto id = decimalId(context.variable);
    if (!id) return failureReply(unknown);
    auto user = store_.user(*id);
    if (!user) return failureReply(user.failure());
    if (!*user) return failureReply(unknown);
    if (auto file = media_.find((*user)->avatar)) return fileReply(context.request, *file, avatarCaching, now_());
    return taggedReply(context.request, "image/png", *avatars_.avatar(*id, (*user)->name), avatarCaching);
}

WebReply ArticleService::publicPage(RequestContext& context) {
    auto id = decimalId(context.variable);
    auto article = id ? store_.article(*id) : ServerResult(std::optional<StoredArticle>());
    if (!article) return failureReply(article.failure());
    std::string html = notFoundHtml();
    if (*article) {
        auto comments = store_.comments(
            {*id, std::nullopt, ServerLimits::commentsPerPublicPage, ServerLimits::commentBytesPerAnswer});
        if (!comments) return failureReply(comments.failure());
        html = articleHtml(**article, *comments, baseUrl(context.request));
    }
    WebReply reply = taggedReply(context.request, "text/html; charset=utf-8", std::move(html), "no-cache");
    if (!*article) reply.status = 404;
    reply.headers.emplace_back("Content-Security-Policy", pagePolicy);
    reply.headers.emplace_back("Referrer-Policy", "no-referrer");
    return reply;
}

WebReply ArticleService::styleSheet(RequestContext& context) {
    return taggedReply(context.request, "text/css; charset=utf-8", std::string(articleStyle()), "max-age=3600");
}

}  // namespace articleserver
