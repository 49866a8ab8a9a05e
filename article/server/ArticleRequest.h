#pragma once

#include "article/server/OstrelServer.h"
#include "article/server/OstrelServerHtmlResultObject.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The seventeen requests that the module sends.
enum class ArticleRequestKind {
    listArticles,
    listOwnArticles,
    nextPage,
    removeArticle,
    likeArticle,
    loadArticle,
    addComment,
    createArticle,
    updateArticle,
    uploadImage,
    uploadVideo,
    setImageCaption,
    setImagePosition,
    removeImage,
    setVideoCaption,
    setVideoPosition,
    removeVideo,
};

/// What an answer was found to be.
struct ArticleAnswer {
    enum class Verdict { succeeded, failed, notJudged };
    Verdict verdict = Verdict::notJudged;
    std::optional<std::string> text;  ///< the answer as received
    std::optional<std::string>
        error;  ///< the server framework's error text, else the server's own (`errString`)
    std::shared_ptr<const OstrelServerHtmlResultObject> result;  ///< of requests that answer with a result
    Dictionary record;  ///< of requests that answer with one object of JSON
    std::string
        parseError;  ///< why `record` could not be read, a sentence; empty when it was, or is not asked for
    bool succeeded() const { return verdict == Verdict::succeeded; }
};

/// The texts that describe a picked video; empty ones are not sent.
struct ArticleVideoFields {
    std::string text, altitude, longitude, latitude;  ///< decimal degrees and metres as texts
    float duration = 0;                               ///< seconds; sent rounded to whole ones
};

/// One request of the catalogue: where it goes, what it carries, and how its answer is judged. Built by the functions
/// below and sent once. Titles, texts and comments travel as form fields; of what goes into a path only captions are
/// encoded, ids and the server's own paths stand as they are.
class ArticleRequest final {
public:
    using Handler = std::function<void(const ArticleAnswer& answer)>;

    static ArticleRequest listArticles();
    static ArticleRequest listOwnArticles();
    /// `path`: the `moreResultsURL` of the page before, sent unchanged.
    static ArticleRequest nextPage(std::string path);
    static ArticleRequest removeArticle(const Value& id);
    static ArticleRequest likeArticle(const Value& id);
    /// Why an article is loaded: a failed load leaves the error file only after a save.
    enum class LoadPurpose { reading, afterSaving };
    static ArticleRequest loadArticle(const std::string& articleId, LoadPurpose purpose);
    static ArticleRequest addComment(const std::string& articleId, std::string text);
    static ArticleRequest createArticle(std::string title, std::string text);
    static ArticleRequest updateArticle(const Value& id, std::string title, std::string text);
    /// `position` counts from 0; an empty `text` is not sent. The files may be data or `UploadFile`.
    static ArticleRequest uploadImage(const std::string& articleId, std::int64_t position, UploadPart jpeg,
                                      std::string text);
    static ArticleRequest uploadVideo(const std::string& articleId, std::int64_t position,
                                      UploadPart thumbnailJpeg, UploadPart mp4,
                                      const ArticleVideoFields& fields);
    static ArticleRequest setImageCaption(const Value& imageId, const std::string& text);
    static ArticleRequest setImagePosition(const Value& imageId, int position);
    static ArticleRequest removeImage(const Value& imageId);
    static ArticleRequest setVideoCaption(const Value& videoId, const std::string& text);
    static ArticleRequest setVideoPosition(const Value& videoId, int position);
    static ArticleRequest removeVideo(const Value& videoId);

    ArticleRequestKind kind() const { return kind_; }
    const std::string& path() const { return path_; }
    const FormFields& fields() const { return fields_; }
    const UploadBody& body() const { return body_; }

    /// Sends it through the shared server; any thread. `handler` runs once, on the main thread, with the judged answer.
    /// A failure leaves the error file as the catalogue says before the handler runs. The progress of uploads is logged.
    void send(Handler handler) const;
    /// Sends it through `server`; any thread. `handler` gets the answer as it is, for `judge`.
    void sendUnjudged(OstrelServer& server, AnswerHandler handler) const;
    /// Judges an answer to this request without sending it, and writes the error file where that is due.
    ArticleAnswer judge(const std::optional<AnswerText>& answer,
                        const std::optional<std::string>& error) const;

private:
    /// What a failure leaves in the error file.
    enum class ErrorFile { none, answer, errorText };

    ArticleRequest(ArticleRequestKind kind, std::string path) : kind_(kind), path_(std::move(path)) {}

    ArticleRequestKind kind_;
    std::string path_;
    FormFields fields_;
    UploadBody body_;
    ErrorFile errorFile_ = ErrorFile::none;
};

/// The quality at which pictures and thumbnails are encoded for an upload.
inline constexpr double uploadedJpegQuality = 0.7;

/// "42.125%" for 0.42125: a sent fraction as the progress of uploads is logged.
std::string uploadProgressText(double fraction);

/// The file in the user's home directory that holds the last answer that came with an error, for inspection only.
inline constexpr char articleErrorFile[] = "/Documents/error.html";

}  // namespace ostrel
