#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/routes/ArticleServiceParts.h"

namespace articleserver {

namespace {

constexpr std::string_view visitorCookie = "ostrel_visitor";
constexpr const char* allArticlesPath = "/article/articles_json.html";
constexpr const char* myArticlesPath = "/article/my_articles_json.html";

ServerFailure noArticle() { return {ServerFault::notFound, "There is no such article."}; }

std::string mediaUrl(const std::string& baseUrl, const std::string& name) { return baseUrl + "/media/" + name; }

nlohmann::ordered_json commentsJson(const CommentPage& page) {
    auto comments = nlohmann::ordered_json::array();
    for (const StoredComment& comment : page.comments) comments.push_back(commentJson(comment));
    return comments;
}

/// The path of the comments before this page's; null when the article has no older comments.
nlohmann::ordered_json olderCommentsPath(std::int64_t article, const CommentPage& page) {
    if (!page.hasMore) return nullptr;
    return "/article/comments_json.html?id=" + std::to_string(article) +
           "&before=" + std::to_string(page.comments.front().id);
}

}  // namespace

nlohmann::ordered_json imageJson(const StoredImage& image, const std::string& baseUrl) {
    return {{"id", image.id},
            {"image", mediaUrl(baseUrl, image.file)},
            {"thumbnail", mediaUrl(baseUrl, image.thumbnail)},
            {"image_width", image.width},
            {"image_height", image.height},
            {"text", image.text}};
}

nlohmann::ordered_json videoJson(const StoredVideo& video, const std::string& baseUrl) {
    return {{"id", video.id},
            {"video", mediaUrl(baseUrl, video.file)},
            {"thumbnail", mediaUrl(baseUrl, video.thumbnail)},
            {"video_width", video.width},
            {"video_height", video.height},
            {"duration", video.duration},
            {"text", video.text}};
}

nlohmann::ordered_json articleJson(const StoredArticle& article, const std::string& baseUrl) {
    using Json = nlohmann::ordered_json;
    Json images = Json::array();
    for (const StoredImage& image : article.images) images.push_back(imageJson(image, baseUrl));
    Json videos = Json::array();
    for (const StoredVideo& video : article.videos) videos.push_back(videoJson(video, baseUrl));
    return {{"id", article.id},
            {"title", article.title},
            {"text", article.text},
            {"auth_name", article.authorName},
            {"auth_id", article.authorId},
            {"modifie_date", isoDate(article.modified)},
            {"liked", article.likes},
            {"comment", article.comments},
            {"open_comment", article.openComment},
            {"url", baseUrl + "/article/" + std::to_string(article.id)},
            {"images", std::move(images)},
            {"videos", std::move(videos)}};
}

nlohmann::ordered_json commentJson(const StoredComment& comment) {
    return {{"id", comment.id},
            {"auth_name", comment.authorName},
            {"auth_id", comment.authorId},
            {"date", isoDate(comment.date)},
            {"text", comment.text}};
}

WebReply ArticleService::articlePage(RequestContext& context, const std::optional<std::int64_t>& author,
                                     const std::string& path) {
    auto before = pageStart(context);
    if (!before) return failureReply(before.failure());
    auto page = store_.articles({author, *before, ServerLimits::pageSize, ServerLimits::articleBytesPerPage});
    if (!page) return failureReply(page.failure());
    std::string base = baseUrl(context.request);
    ResultAnswer answer;
    for (const StoredArticle& article : page->articles) answer.results.push_back(articleJson(article, base));
    if (page->hasMore) answer.more = path + "?before=" + std::to_string(page->articles.back().id);
    return resultReply(answer);
}

WebReply ArticleService::listArticles(RequestContext& context) {
    return articlePage(context, std::nullopt, allArticlesPath);
}

WebReply ArticleService::listMyArticles(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    return articlePage(context, user->id, myArticlesPath);
}

WebReply ArticleService::loadArticle(RequestContext& context) {
    auto id = decimalId(context.variable);
    if (!id) return failureReply(noArticle());
    auto article = store_.article(*id);
    if (!article) return failureReply(article.failure());
    if (!*article) return failureReply(noArticle());
    auto page =
        store_.comments({*id, std::nullopt, ServerLimits::commentsPerAnswer, ServerLimits::commentBytesPerAnswer});
    if (!page) return failureReply(page.failure());
    auto record = articleJson(**article, baseUrl(context.request));
    record["comments"] = commentsJson(*page);
    record["more_comments"] = olderCommentsPath(*id, *page);
    return jsonReply(200, record);
}

WebReply ArticleService::olderComments(RequestContext& context) {
    auto id = articleId(context);
    if (!id) return failureReply(id.failure());
    auto before = pageStart(context);
    if (!before) return failureReply(before.failure());
    auto article = store_.article(*id);
    if (!article) return failureReply(article.failure());
    if (!*article) return failureReply(noArticle());
    auto page = store_.comments({*id, *before, ServerLimits::commentsPerPage, ServerLimits::commentBytesPerAnswer});
    if (!page) return failureReply(page.failure());
    ResultAnswer answer;
    answer.results = commentsJson(*page);
    answer.more = olderCommentsPath(*id, *page);
    return resultReply(answer);
}

WebReply ArticleService::removeArticle(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto id = articleId(context);
    if (!id) return failureReply(id.failure());
    auto files = store_.removeArticle(*id, user->id);
    if (!files) return failureReply(files.failure());
    // The record is removed first: a crash before the next line leaves files, which the next start removes,
    // and never a record without files.
    media_.remove(*files);
    return resultReply({});
}

WebReply ArticleService::likeArticle(RequestContext& context) {
    auto user = signedIn(context);
    if (!user) return failureReply(user.failure());
    auto id = articleId(context);
    if (!id) return failureReply(id.failure());

    std::string liker;
    std::string newVisitor;
    if (*user) {
        liker = "user " + std::to_string((*user)->id);
    } else {
        std::string token(context.request.cookie(visitorCookie));
        if (!isToken(token)) {
            if (!visitors_.take(context.request.remoteAddress, now_())) {
                return failureReply({ServerFault::throttled, "Too many likes. Try again later."});
            }
            token = newVisitor = newToken();
        }
        liker = "visitor " + tokenHash(token);
    }
    auto count = store_.likeArticle(*id, liker);
    if (!count) return failureReply(count.failure());
    if (!newVisitor.empty()) {
        auto life = std::chrono::duration_cast<std::chrono::seconds>(ServerLimits::visitorLife).count();
        context.cookies.push_back(cookie(visitorCookie, newVisitor, life));
    }
    ResultAnswer answer;
    answer.result = std::to_string(*count);
    return resultReply(answer);
}

WebReply ArticleService::addComment(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto id = articleId(context);
    if (!id) return failureReply(id.failure());
    auto form = parseFields(context.request.body);
    if (!form) return failureReply(form.failure());
    auto text = form->find("text");
    if (text == form->end() || trimmedText(text->second).empty()) {
        return failureReply({ServerFault::badInput, "The comment is empty."});
    }
    if (characterCount(text->second) > ServerLimits::commentCharacters) {
        return failureReply({ServerFault::tooLarge, "The comment is too long."});
    }
    if (!comments_.take(std::to_string(user->id), now_())) {
        return failureReply({ServerFault::throttled, "Too many comments. Try again in a few minutes."});
    }
    auto count = store_.addComment(*id, user->id, text->second, now_());
    if (!count) return failureReply(count.failure());
    ResultAnswer answer;
    answer.result = std::to_string(*count);
    return resultReply(answer);
}

}  // namespace articleserver
