#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/routes/ArticleServiceParts.h"

namespace articleserver {

ServerResult<PublishRequest> ArticleService::publishRequest(const RequestContext& context,
                                                            const StoredUser& user) const {
    const std::string_view key = context.request.header("idempotency-key");
    if (key.size() > ServerLimits::repeatKey) {
        return ServerFailure{ServerFault::badInput, "The Idempotency-Key is too long."};
    }
    return PublishRequest{user.id, std::string(key), now_()};
}

WebReply ArticleService::articleReply(RequestContext& context, std::int64_t id) {
    auto article = store_.article(id);
    if (!article) return failureReply(article.failure());
    if (!*article) return failureReply({ServerFault::notFound, "There is no such article."});
    return jsonReply(200, articleJson(**article, baseUrl(context.request)));
}

WebReply ArticleService::writeArticle(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto form = parseFields(context.request.body);
    if (!form) return failureReply(form.failure());
    auto title = form->find("title");
    auto text = form->find("text");
    if (title == form->end() || text == form->end()) {
        return failureReply({ServerFault::badInput, "The title or the text of the article is missing."});
    }
    if (title->second.size() > ServerLimits::titleBytes) {
        return failureReply({ServerFault::tooLarge, "The title is too long."});
    }
    if (text->second.size() > ServerLimits::textBytes) {
        return failureReply({ServerFault::tooLarge, "The text is too long."});
    }
    auto request = publishRequest(context, *user);
    if (!request) return failureReply(request.failure());

    if (context.request.query.contains("id")) {
        auto id = articleId(context);
        if (!id) return failureReply(id.failure());
        auto updated = store_.updateArticle(*id, *request, title->second, text->second);
        if (!updated) return failureReply(updated.failure());
        return articleReply(context, *id);
    }
    if (!articles_.take(std::to_string(user->id), now_())) {
        return failureReply({ServerFault::throttled, "Too many articles. Try again in a few minutes."});
    }
    StoredArticle article;
    article.title = title->second;
    article.text = text->second;
    auto made = store_.createArticle(*request, article);
    if (!made) return failureReply(made.failure());
    return articleReply(context, made->id);
}

}  // namespace articleserver
