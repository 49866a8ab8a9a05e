#pragma once

#include "article/server/OstrelServer.h"
#include "article/server/OstrelServerHtmlResultObject.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// An answer, and what the catalogue says of it.
struct ArticleAnswer {
    enum class Verdict { succeeded, failed, notJudged };
    Verdict verdict = Verdict::notJudged;
    /// The answer as received.
    std::optional<std::string> text;
    /// The server framework's error text; without one, the error that the server itself reported (`errString`).
    std::optional<std::string> error;
    /// Present for requests whose answer is a result, when there was no transport error.
    std::shared_ptr<const OstrelServerHtmlResultObject> result;
    /// Present for requests whose answer is one object of JSON, when it could be read.
    Dictionary record;
    /// A sentence that says why `record` could not be read; empty when it was read, or is not expected.
    std::string parseError;
    bool succeeded() const { return verdict == Verdict::succeeded; }
};

/// What a video's upload says about it. Empty texts are not sent.
struct ArticleVideoFields {
    std::string text;
    /// Metres, as a decimal text.
    std::string altitude;
    /// Decimal degrees, as texts.
    std::string longitude, latitude;
    /// Seconds; sent rounded to whole ones.
    float duration = 0;
};

/// One request of the catalogue: its path, its body, and the rule by which its answer is judged. The functions below
/// are the catalogue; the table at the top of the source has a line for each of them. Titles, texts and comments travel
/// as form fields. Captions are encoded for their path; ids and the server's own paths are sent as they are.
class ArticleRequest final {
public:
    using Handler = std::function<void(const ArticleAnswer& answer)>;

    static ArticleRequest listArticles();
    static ArticleRequest listOwnArticles();
    /// `path`: the `moreResultsURL` of the previous page, sent unchanged.
    static ArticleRequest nextPage(std::string path);
    static ArticleRequest removeArticle(const Value& id);
    static ArticleRequest likeArticle(const Value& id);
    /// Why an article is loaded: a load that fails writes the error file only after a save.
    enum class LoadPurpose { reading, afterSaving };
    static ArticleRequest loadArticle(const std::string& articleId, LoadPurpose purpose);
    static ArticleRequest addComment(const std::string& articleId, std::string text);
    static ArticleRequest createArticle(std::string title, std::string text);
    static ArticleRequest updateArticle(const Value& id, std::string title, std::string text);
    /// `position` counts from 0; an empty `text` is not sent. The file is `Data` or an `UploadFile`.
    static ArticleRequest uploadImage(const std::string& articleId, std::int64_t position, UploadPart jpeg,
                                      std::string text);
    static ArticleRequest uploadVideo(const std::string& articleId, std::int64_t position, UploadPart thumbnailJpeg,
                                      UploadPart mp4, const ArticleVideoFields& fields);
    static ArticleRequest setImageCaption(const Value& imageId, const std::string& text);
    static ArticleRequest setImagePosition(const Value& imageId, int position);
    static ArticleRequest removeImage(const Value& imageId);
    static ArticleRequest setVideoCaption(const Value& videoId, const std::string& text);
    static ArticleRequest setVideoPosition(const Value& videoId, int position);
    static ArticleRequest removeVideo(const Value& videoId);

    const std::string& path() const { return path_; }
    const FormFields& fields() const { return fields_; }
    const UploadBody& body() const { return body_; }

    /// Sends the request through the shared server. Any thread. `handler` runs once, on the main thread, with the
    /// judged answer, after the error file has been written. The progress of uploads is logged.
    void send(Handler handler) const;
    /// Sends the request through `server`. Any thread. `handler` gets the answer as received, to hand it to `judge`.
    void sendUnjudged(OstrelServer& server, AnswerHandler handler) const;
    /// Judges an answer to this request, and writes the error file when the rule asks for it. Main thread.
    ArticleAnswer judge(const std::optional<AnswerText>& answer, const std::optional<std::string>& error) const;

private:
    struct Rule;
    struct Rules;

    /// `values` take the places of the "%@" in the rule's path, in order.
    ArticleRequest(const Rule& rule, std::initializer_list<std::string_view> values);

    const Rule* rule_;
    std::string path_;
    FormFields fields_;
    UploadBody body_;
};

/// The quality at which pictures and thumbnails are encoded for an upload.
inline constexpr double uploadedJpegQuality = 0.7;

/// The sent fraction of an upload as the log shows it: "42.125%" for 0.42125.
std::string uploadProgressText(double fraction);

/// Where the last answer that came with an error is kept, below the user's home directory. Written for people who look
/// for the cause; no code reads it.
inline constexpr char articleErrorFile[] = "/Documents/error.html";

}  // namespace ostrel
