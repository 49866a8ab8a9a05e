#include "article/server/ArticleRequest.h"

#include "article/server/NSDjango.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/values/Text.h"

#include <cstdio>
#include <utility>

namespace ostrel {

namespace {

enum class Transport { get, form, multipart };
enum class Reading { none, text, result, json };

struct Rule {
    Transport transport;
    Reading reading;
    bool judged;
    /// A result must also say that it succeeded.
    bool needsSuccess = false;
    /// The answer is read for the log alone: what it says does not decide.
    bool informs = false;
};

Rule ruleOf(ArticleRequestKind kind) {
    using Kind = ArticleRequestKind;
    switch (kind) {
    case Kind::listArticles:
    case Kind::listOwnArticles:
    case Kind::nextPage: return {Transport::get, Reading::result, true};
    case Kind::removeArticle: return {Transport::get, Reading::text, false};
    case Kind::likeArticle: return {Transport::get, Reading::result, true, true};
    case Kind::loadArticle: return {Transport::get, Reading::json, true};
    case Kind::addComment: return {Transport::form, Reading::result, true};
    case Kind::createArticle: return {Transport::form, Reading::json, true};
    case Kind::updateArticle: return {Transport::form, Reading::none, true};
    case Kind::uploadImage:
    case Kind::uploadVideo: return {Transport::multipart, Reading::json, true, false, true};
    case Kind::setImageCaption:
    case Kind::setImagePosition:
    case Kind::setVideoCaption:
    case Kind::setVideoPosition: return {Transport::get, Reading::none, false};
    case Kind::removeImage:
    case Kind::removeVideo: return {Transport::get, Reading::none, true};
    }
    return {Transport::get, Reading::none, false};
}

std::string idText(const Value& id) { return id.text().value_or("(null)"); }

std::string uploadPath(const char* base, const std::string& articleId, std::int64_t position) {
    return std::string(base) + "?article_id=" + articleId + "&value=" + decimalText(position);
}

void addField(UploadBody& body, const char* name, const std::string& text) {
    if (!text.empty()) body.emplace(name, text);
}

std::string wholeSeconds(float seconds) {
    char text[64];
    std::snprintf(text, sizeof text, "%.0f", static_cast<double>(seconds));
    return text;
}

}  // namespace

ArticleRequest ArticleRequest::listArticles() {
    return {ArticleRequestKind::listArticles, "/article/articles_json.html"};
}

ArticleRequest ArticleRequest::listOwnArticles() {
    return {ArticleRequestKind::listOwnArticles, "/article/my_articles_json.html"};
}

ArticleRequest ArticleRequest::nextPage(std::string path) {
    return {ArticleRequestKind::nextPage, std::move(path)};
}

ArticleRequest ArticleRequest::removeArticle(const Value& id) {
    return {ArticleRequestKind::removeArticle, "/article/remove?id=" + idText(id)};
}

ArticleRequest ArticleRequest::likeArticle(const Value& id) {
    return {ArticleRequestKind::likeArticle, "/article/like_article_json.html?id=" + idText(id)};
}

ArticleRequest ArticleRequest::loadArticle(const std::string& articleId, LoadPurpose purpose) {
    ArticleRequest request(ArticleRequestKind::loadArticle, "/article/article_" + articleId + "_json.html");
    if (purpose == LoadPurpose::afterSaving) request.errorFile_ = ErrorFile::answer;
    return request;
}

ArticleRequest ArticleRequest::addComment(const std::string& articleId, std::string text) {
    ArticleRequest request(ArticleRequestKind::addComment, "/article/json_add_comment.html?id=" + articleId);
    request.fields_ = {{"text", std::move(text)}};
    request.errorFile_ = ErrorFile::errorText;
    return request;
}

ArticleRequest ArticleRequest::createArticle(std::string title, std::string text) {
    ArticleRequest request(ArticleRequestKind::createArticle, "/article/update_article_json.html");
    request.fields_ = {{"title", std::move(title)}, {"text", std::move(text)}};
    request.errorFile_ = ErrorFile::answer;
    return request;
}

ArticleRequest ArticleRequest::updateArticle(const Value& id, std::string title, std::string text) {
    ArticleRequest request = createArticle(std::move(title), std::move(text));
    request.kind_ = ArticleRequestKind::updateArticle;
    request.path_ += "?id=" + idText(id);
    return request;
}

ArticleRequest ArticleRequest::uploadImage(const std::string& articleId, std::int64_t position,
                                           UploadPart jpeg, std::string text) {
    ArticleRequest request(ArticleRequestKind::uploadImage,
                           uploadPath("article/image_update", articleId, position));
    request.body_.emplace("image.jpg", std::move(jpeg));
    addField(request.body_, "text", text);
    request.errorFile_ = ErrorFile::answer;
    return request;
}

ArticleRequest ArticleRequest::uploadVideo(const std::string& articleId, std::int64_t position,
                                           UploadPart thumbnailJpeg, UploadPart mp4,
                                           const ArticleVideoFields& fields) {
    ArticleRequest request(ArticleRequestKind::uploadVideo,
                           uploadPath("article/video_update", articleId, position));
    request.body_.emplace("thumbnail.jpg", std::move(thumbnailJpeg));
    request.body_.emplace("video.mp4", std::move(mp4));
    addField(request.body_, "text", fields.text);
    addField(request.body_, "altitude", fields.altitude);
    addField(request.body_, "longitude", fields.longitude);
    addField(request.body_, "latitude", fields.latitude);
    request.body_.emplace("duration", wholeSeconds(fields.duration));
    request.errorFile_ = ErrorFile::answer;
    return request;
}

ArticleRequest ArticleRequest::setImageCaption(const Value& imageId, const std::string& text) {
    return {ArticleRequestKind::setImageCaption,
            "article/image_update?id=" + idText(imageId) + "&text=" + NSDjangoStringEncoder::encoder(text)};
}

ArticleRequest ArticleRequest::setImagePosition(const Value& imageId, int position) {
    return {ArticleRequestKind::setImagePosition,
            "article/image_update?id=" + idText(imageId) + "&value=" + decimalText(position)};
}

ArticleRequest ArticleRequest::removeImage(const Value& imageId) {
    return {ArticleRequestKind::removeImage, "article/image_remove?id=" + idText(imageId)};
}

ArticleRequest ArticleRequest::setVideoCaption(const Value& videoId, const std::string& text) {
    return {ArticleRequestKind::setVideoCaption,
            "article/video_update?id=" + idText(videoId) + "&text=" + NSDjangoStringEncoder::encoder(text)};
}

ArticleRequest ArticleRequest::setVideoPosition(const Value& videoId, int position) {
    return {ArticleRequestKind::setVideoPosition,
            "article/video_update?id=" + idText(videoId) + "&value=" + decimalText(position)};
}

ArticleRequest ArticleRequest::removeVideo(const Value& videoId) {
    return {ArticleRequestKind::removeVideo, "article/video_remove?id=" + idText(videoId)};
}

void ArticleRequest::send(Handler handler) const {
    sendUnjudged(OstrelServer::shareServer(),
                 [request = *this, handler = std::move(handler)](const auto& answer, const auto& error) {
                     const ArticleAnswer judged = request.judge(answer, error);
                     if (handler) handler(judged);
                 });
}

void ArticleRequest::sendUnjudged(OstrelServer& server, AnswerHandler handler) const {
    switch (ruleOf(kind_).transport) {
    case Transport::get: server.request(path_, std::move(handler)); break;
    case Transport::form: server.postURL(path_, fields_, std::move(handler)); break;
    case Transport::multipart: {
        const char* format = kind_ == ArticleRequestKind::uploadImage ? "upload image progress:%@"
                                                                      : "upload video progress:%@";
        server.postManyDataURL(path_, body_, std::move(handler),
                               [format](double fraction) { NSLog(format, uploadProgressText(fraction)); });
        break;
    }
    }
}

ArticleAnswer ArticleRequest::judge(const std::optional<AnswerText>& answer,
                                    const std::optional<std::string>& error) const {
    const Rule rule = ruleOf(kind_);
    ArticleAnswer judged;
    if (answer) judged.text = answer->string();
    judged.error = error;
    bool good = !error;
    if (good && rule.reading == Reading::result) {
        judged.result = OstrelServerHtmlResultObject::initWithHtml(answer.value_or(""));
        judged.error = judged.result->errString();
        good = !judged.error && (!rule.needsSuccess || judged.result->success());
    } else if (good && rule.reading == Reading::json) {
        const Value read = answer.value_or("").json(&judged.parseError);
        judged.record = Dictionary(read);
        if (!read.isAbsent() && !judged.record) judged.parseError = "The answer is no JSON object.";
        good = rule.informs || judged.record;
    }
    if (rule.judged)
        judged.verdict = good ? ArticleAnswer::Verdict::succeeded : ArticleAnswer::Verdict::failed;
    if (error) {
        if (errorFile_ == ErrorFile::answer && answer)
            writeFileAtomically(NSHomeDirectory() + articleErrorFile, answer->string());
        if (errorFile_ == ErrorFile::errorText)
            writeFileAtomically(NSHomeDirectory() + articleErrorFile, *error);
    }
    return judged;
}

std::string uploadProgressText(double fraction) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f%%", fraction * 100);
    return text;
}

}  // namespace ostrel
