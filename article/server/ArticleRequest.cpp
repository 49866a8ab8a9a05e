#include "article/server/ArticleRequest.h"

#include "article/server/NSDjango.h"
#include "platform/foundation/resources/Files.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/values/Text.h"

#include <cstdio>
#include <utility>

namespace ostrel {

/// What the catalogue knows of one request.
struct ArticleRequest::Rule {
    enum class Transport { get, form, multipart };
    /// What decides whether the request succeeded, when there was no transport error.
    enum class Judgement {
        notJudged,
        /// Nothing: the answer is not read.
        byTransport,
        /// The answer is a result without an error.
        byResult,
        /// The answer is a result without an error that says "success" as well.
        byResultThatSaysSuccess,
        /// The answer is one object of JSON.
        byRecord,
        /// Nothing: the answer's object of JSON is read for the log alone.
        byTransportWithRecord,
    };
    /// What an answer with a transport error leaves in the error file. An answer without a text leaves nothing.
    enum class ErrorFile { untouched, answer, errorText };

    /// With "%@" in place of each value.
    const char* path;
    Transport transport;
    Judgement judgement;
    ErrorFile errorFile = ErrorFile::untouched;
    /// The log line of an upload's progress, with "%@" in place of the percentage.
    const char* progressLine = nullptr;
};

struct ArticleRequest::Rules {
    using enum Rule::Transport;
    using enum Rule::Judgement;
    using enum Rule::ErrorFile;

    // Reading
    static constexpr Rule listArticles{"/article/articles_json.html", get, byResult};
    static constexpr Rule listOwnArticles{"/article/my_articles_json.html", get, byResult};
    static constexpr Rule nextPage{"%@", get, byResult};
    static constexpr Rule loadArticle{"/article/article_%@_json.html", get, byRecord};
    static constexpr Rule loadSavedArticle{"/article/article_%@_json.html", get, byRecord, answer};
    // One article
    static constexpr Rule removeArticle{"/article/remove?id=%@", get, notJudged};
    static constexpr Rule likeArticle{"/article/like_article_json.html?id=%@", get, byResultThatSaysSuccess};
    static constexpr Rule addComment{"/article/json_add_comment.html?id=%@", form, byResult, errorText};
    static constexpr Rule createArticle{"/article/update_article_json.html", form, byRecord, answer};
    static constexpr Rule updateArticle{"/article/update_article_json.html?id=%@", form, byTransport, answer};
    // Its images and videos
    static constexpr Rule uploadImage{"article/image_update?article_id=%@&value=%@", multipart, byTransportWithRecord,
                                      answer, "upload image progress:%@"};
    static constexpr Rule uploadVideo{"article/video_update?article_id=%@&value=%@", multipart, byTransportWithRecord,
                                      answer, "upload video progress:%@"};
    static constexpr Rule setImageCaption{"article/image_update?id=%@&text=%@", get, notJudged};
    static constexpr Rule setVideoCaption{"article/video_update?id=%@&text=%@", get, notJudged};
    static constexpr Rule setImagePosition{"article/image_update?id=%@&value=%@", get, notJudged};
    static constexpr Rule setVideoPosition{"article/video_update?id=%@&value=%@", get, notJudged};
    static constexpr Rule removeImage{"article/image_remove?id=%@", get, byTransport};
    static constexpr Rule removeVideo{"article/video_remove?id=%@", get, byTransport};
};

namespace {

std::string idText(const Value& id) { return id.text().value_or("(null)"); }

/// `path` with the values in place of its "%@". A "%@" within a value stays.
std::string filled(std::string_view path, std::initializer_list<std::string_view> values) {
    constexpr std::string_view placeholder = "%@";
    std::string text;
    for (const std::string_view value : values) {
        const std::size_t place = path.find(placeholder);
        text.append(path.substr(0, place)).append(value);
        path.remove_prefix(place + placeholder.size());
    }
    return text.append(path);
}

void addField(UploadBody& body, const char* name, const std::string& text) {
    if (!text.empty()) body.emplace(name, text);
}

/// "%.0f": to the nearest whole number, exact halves to the even one.
std::string wholeSeconds(float seconds) {
    char text[64];
    std::snprintf(text, sizeof text, "%.0f", static_cast<double>(seconds));
    return text;
}

}  // namespace

ArticleRequest::ArticleRequest(const Rule& rule, std::initializer_list<std::string_view> values)
    : rule_(&rule), path_(filled(rule.path, values)) {}

ArticleRequest ArticleRequest::listArticles() { return {Rules::listArticles, {}}; }

ArticleRequest ArticleRequest::listOwnArticles() { return {Rules::listOwnArticles, {}}; }

ArticleRequest ArticleRequest::nextPage(std::string path) { return {Rules::nextPage, {path}}; }

ArticleRequest ArticleRequest::removeArticle(const Value& id) { return {Rules::removeArticle, {idText(id)}}; }

ArticleRequest ArticleRequest::likeArticle(const Value& id) { return {Rules::likeArticle, {idText(id)}}; }

ArticleRequest ArticleRequest::loadArticle(const std::string& articleId, LoadPurpose purpose) {
    return {purpose == LoadPurpose::afterSaving ? Rules::loadSavedArticle : Rules::loadArticle, {articleId}};
}

ArticleRequest ArticleRequest::addComment(const std::string& articleId, std::string text) {
    ArticleRequest request(Rules::addComment, {articleId});
    request.fields_ = {{"text", std::move(text)}};
    return request;
}

ArticleRequest ArticleRequest::createArticle(std::string title, std::string text) {
    ArticleRequest request(Rules::createArticle, {});
    request.fields_ = {{"title", std::move(title)}, {"text", std::move(text)}};
    return request;
}

ArticleRequest ArticleRequest::updateArticle(const Value& id, std::string title, std::string text) {
    ArticleRequest request(Rules::updateArticle, {idText(id)});
    request.fields_ = {{"title", std::move(title)}, {"text", std::move(text)}};
    return request;
}

ArticleRequest ArticleRequest::uploadImage(const std::string& articleId, std::int64_t position, UploadPart jpeg,
                                           std::string text) {
    ArticleRequest request(Rules::uploadImage, {articleId, decimalText(position)});
    request.body_.emplace("image.jpg", std::move(jpeg));
    addField(request.body_, "text", text);
    return request;
}

ArticleRequest ArticleRequest::uploadVideo(const std::string& articleId, std::int64_t position,
                                           UploadPart thumbnailJpeg, UploadPart mp4, const ArticleVideoFields& fields) {
    ArticleRequest request(Rules::uploadVideo, {articleId, decimalText(position)});
    request.body_.emplace("thumbnail.jpg", std::move(thumbnailJpeg));
    request.body_.emplace("video.mp4", std::move(mp4));
    addField(request.body_, "text", fields.text);
    addField(request.body_, "altitude", fields.altitude);
    addField(request.body_, "longitude", fields.longitude);
    addField(request.body_, "latitude", fields.latitude);
    request.body_.emplace("duration", wholeSeconds(fields.duration));
    return request;
}

ArticleRequest ArticleRequest::setImageCaption(const Value& imageId, const std::string& text) {
    return {Rules::setImageCaption, {idText(imageId), NSDjangoStringEncoder::encoder(text)}};
}

ArticleRequest ArticleRequest::setImagePosition(const Value& imageId, int position) {
    return {Rules::setImagePosition, {idText(imageId), decimalText(position)}};
}

ArticleRequest ArticleRequest::removeImage(const Value& imageId) { return {Rules::removeImage, {idText(imageId)}}; }

ArticleRequest ArticleRequest::setVideoCaption(const Value& videoId, const std::string& text) {
    return {Rules::setVideoCaption, {idText(videoId), NSDjangoStringEncoder::encoder(text)}};
}

ArticleRequest ArticleRequest::setVideoPosition(const Value& videoId, int position) {
    return {Rules::setVideoPosition, {idText(videoId), decimalText(position)}};
}

ArticleRequest ArticleRequest::removeVideo(const Value& videoId) { return {Rules::removeVideo, {idText(videoId)}}; }

void ArticleRequest::send(Handler handler) const {
    sendUnjudged(OstrelServer::shareServer(),
                 [request = *this, handler = std::move(handler)](const auto& answer, const auto& error) {
                     const ArticleAnswer judged = request.judge(answer, error);
                     if (handler) handler(judged);
                 });
}

void ArticleRequest::sendUnjudged(OstrelServer& server, AnswerHandler handler) const {
    switch (rule_->transport) {
    case Rules::get: server.request(path_, std::move(handler)); break;
    case Rules::form: server.postURL(path_, fields_, std::move(handler)); break;
    case Rules::multipart:
        server.postManyDataURL(path_, body_, std::move(handler), [line = rule_->progressLine](double fraction) {
            NSLog(line, uploadProgressText(fraction));
        });
        break;
    }
}

ArticleAnswer ArticleRequest::judge(const std::optional<AnswerText>& answer,
                                    const std::optional<std::string>& error) const {
    const Rule& rule = *rule_;
    const AnswerText text = answer.value_or("");
    ArticleAnswer judged;
    if (answer) judged.text = answer->string();
    judged.error = error;
    bool good = !error;
    if (!error) {
        switch (rule.judgement) {
        case Rules::notJudged:
        case Rules::byTransport: break;
        case Rules::byResult:
        case Rules::byResultThatSaysSuccess:
            judged.result = OstrelServerHtmlResultObject::initWithHtml(text);
            judged.error = judged.result->errString();
            good = !judged.error && (rule.judgement == Rules::byResult || judged.result->success());
            break;
        case Rules::byRecord:
        case Rules::byTransportWithRecord:
            const Value read = text.json(&judged.parseError);
            judged.record = Dictionary(read);
            if (!read.isAbsent() && !judged.record) judged.parseError = "The answer is no JSON object.";
            good = judged.record || rule.judgement == Rules::byTransportWithRecord;
            break;
        }
    }
    if (rule.judgement != Rules::notJudged)
        judged.verdict = good ? ArticleAnswer::Verdict::succeeded : ArticleAnswer::Verdict::failed;
    if (error) {
        if (rule.errorFile == Rules::errorText)
            writeFileAtomically(NSHomeDirectory() + articleErrorFile, *error);
        else if (rule.errorFile != Rules::untouched && answer)
            writeFileAtomically(NSHomeDirectory() + articleErrorFile, answer->string());
    }
    return judged;
}

std::string uploadProgressText(double fraction) {
    char text[64];
    std::snprintf(text, sizeof text, "%.3f%%", fraction * 100);
    return text;
}

}  // namespace ostrel
