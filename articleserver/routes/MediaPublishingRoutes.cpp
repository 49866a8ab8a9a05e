#include "articleserver/common/ServerLimits.h"
#include "articleserver/media/UploadReceiver.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/routes/ArticleServiceParts.h"

#include <charconv>
#include <cmath>

namespace articleserver {

namespace {

constexpr std::string_view imagePart = "image.jpg";
constexpr std::string_view stillPart = "thumbnail.jpg";
constexpr std::string_view videoPart = "video.mp4";

ServerFailure badUpload(std::string text) { return {ServerFault::badInput, std::move(text)}; }

ServerResult<std::int64_t> positionOf(const std::string& text) {
    auto position = decimalId(text);
    if (!position || *position > ServerLimits::position) {
        return badUpload("The position is not a number from 0 on.");
    }
    return *position;
}

ServerResult<void> checkCaption(const std::string& text) {
    if (text.size() <= ServerLimits::captionBytes) return {};
    return ServerFailure{ServerFault::tooLarge, "The caption is too long."};
}

/// Parses a duration in seconds.
ServerResult<double> durationOf(const std::string& text) {
    double seconds = -1;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = fault == std::errc() && end == text.data() + text.size();
    if (!isNumber || !(seconds >= 0) || seconds > ServerLimits::durationSeconds) {
        return badUpload("The duration is not a number of seconds.");
    }
    return seconds;
}

}  // namespace

/// The files of an upload.
struct ArticleService::Admission {
    std::vector<UploadReceiver::FileRule> files;
    std::uint64_t bytes() const {
        std::uint64_t sum = ServerLimits::uploadFields;
        for (const auto& file : files) sum += file.maximumBytes;
        return sum;
    }
};

struct ArticleService::Upload {
    PublishRequest request;
    MediumPlace place;
};

ServerResult<ArticleService::Upload> ArticleService::uploadOf(RequestContext& context) {
    auto user = signedInOnly(context);
    if (!user) return user.failure();
    auto request = publishRequest(context, *user);
    if (!request) return request.failure();
    const WebFields& query = context.request.query;
    auto article = query.find("article_id");
    auto value = query.find("value");
    if (article == query.end() || value == query.end()) {
        return badUpload("The article or the position of the upload is missing.");
    }
    auto id = decimalId(article->second);
    if (!id) return badUpload("The id of the article is not a number.");
    auto position = positionOf(value->second);
    if (!position) return position.failure();
    return Upload{std::move(*request), {*id, *position}};
}

WebIntake ArticleService::admit(RequestContext& context, std::uint64_t length, const Admission& admission) {
    const auto refused = [&](const ServerFailure& failure) { return WebIntake{failureReply(failure), nullptr}; };
    auto upload = uploadOf(context);
    if (!upload) return refused(upload.failure());
    auto isAuthor = store_.checkAuthor(upload->place.article, upload->request.user);
    if (!isAuthor) return refused(isAuthor.failure());
    if (length == 0) return refused(badUpload("The upload is empty."));
    if (length > admission.bytes()) return refused({ServerFault::tooLarge, "The upload is too large."});
    if (length > media_.freeBytes()) return refused({ServerFault::storageFull, "The server's storage is full."});
    std::shared_ptr<void> slot(nullptr, [uploads = uploads_](void*) { --*uploads; });
    if (++*uploads_ > ServerLimits::uploadsAtOnce) {
        return refused({ServerFault::busy, "The server is busy. Try again in a moment."});
    }
    return {std::nullopt, std::make_shared<UploadReceiver>(context.request.header("content-type"), media_,
                                                           admission.files, std::move(slot))};
}

WebIntake ArticleService::admitImage(RequestContext& context, std::uint64_t length) {
    return admit(context, length, {{{imagePart, "jpg", ServerLimits::imageFile}}});
}

WebIntake ArticleService::admitVideo(RequestContext& context, std::uint64_t length) {
    return admit(context, length,
                 {{{stillPart, "jpg", ServerLimits::stillFile}, {videoPart, "mp4", ServerLimits::videoFile}}});
}

WebReply ArticleService::uploadImage(RequestContext& context) {
    auto upload = uploadOf(context);
    if (!upload) return failureReply(upload.failure());
    auto& body = static_cast<UploadReceiver&>(*context.request.receiver);
    auto finished = body.finish();
    if (!finished) return failureReply(finished.failure());
    const std::string text = body.field("text").value_or("");
    auto caption = checkCaption(text);
    if (!caption) return failureReply(caption.failure());

    auto taken = ingest_.addImage(body.file(imagePart));
    if (!taken) return failureReply(taken.failure());
    StoredImage& image = *taken;
    image.text = text;
    auto added = store_.addImage(upload->request, upload->place, image);
    if (!added || added->isRepeat) media_.remove({image.file, image.thumbnail});
    if (!added) return failureReply(added.failure());
    if (added->isRepeat) return jsonReply(200, {{"id", added->id}});
    image.id = added->id;
    return jsonReply(200, imageJson(image, baseUrl(context.request)));
}

WebReply ArticleService::uploadVideo(RequestContext& context) {
    auto upload = uploadOf(context);
    if (!upload) return failureReply(upload.failure());
    auto& body = static_cast<UploadReceiver&>(*context.request.receiver);
    auto finished = body.finish();
    if (!finished) return failureReply(finished.failure());
    StoredVideo video;
    video.text = body.field("text").value_or("");
    auto caption = checkCaption(video.text);
    if (!caption) return failureReply(caption.failure());
    for (auto [name, place] : {std::pair("altitude", &video.altitude), std::pair("longitude", &video.longitude),
                               std::pair("latitude", &video.latitude)}) {
        *place = body.field(name).value_or("");
        if (place->size() > ServerLimits::placeCharacters) {
            return failureReply(badUpload("The place of the video is too long."));
        }
    }
    const auto field = body.field("duration");
    auto duration = field ? durationOf(*field) : ServerResult<double>(0);
    if (!duration) return failureReply(duration.failure());

    auto taken = ingest_.addVideo(body.file(videoPart), body.file(stillPart));
    if (!taken) return failureReply(taken.failure());
    video.file = taken->file;
    video.thumbnail = taken->thumbnail;
    video.width = taken->width;
    video.height = taken->height;
    // Without a duration in the upload, the duration of the index of the clip counts.
    video.duration = field ? *duration : taken->duration;
    auto added = store_.addVideo(upload->request, upload->place, video);
    if (!added || added->isRepeat) media_.remove({video.file, video.thumbnail});
    if (!added) return failureReply(added.failure());
    if (added->isRepeat) return jsonReply(200, {{"id", added->id}});
    video.id = added->id;
    return jsonReply(200, videoJson(video, baseUrl(context.request)));
}

WebReply ArticleService::changeMedium(RequestContext& context, MediumKind kind) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto request = publishRequest(context, *user);
    if (!request) return failureReply(request.failure());
    const WebFields& query = context.request.query;
    auto given = query.find("id");
    auto id = given == query.end() ? std::nullopt : decimalId(given->second);
    if (!id) return failureReply(badUpload("The id is missing or not a number."));
    MediumChange change;
    if (auto text = query.find("text"); text != query.end()) {
        auto caption = checkCaption(text->second);
        if (!caption) return failureReply(caption.failure());
        change.text = text->second;
    }
    if (auto value = query.find("value"); value != query.end()) {
        auto position = positionOf(value->second);
        if (!position) return failureReply(position.failure());
        change.position = *position;
    }
    if (!change.text && !change.position) {
        return failureReply(badUpload("There is neither a caption nor a position."));
    }
    auto changed = store_.changeMedium(kind, *id, *request, change);
    if (!changed) return failureReply(changed.failure());
    return resultReply({});
}

WebReply ArticleService::removeMedium(RequestContext& context, MediumKind kind) {
    auto user = signedInOnly(context);
    if (!user) return failureReply(user.failure());
    auto request = publishRequest(context, *user);
    if (!request) return failureReply(request.failure());
    auto given = context.request.query.find("id");
    auto id = given == context.request.query.end() ? std::nullopt : decimalId(given->second);
    if (!id) return failureReply(badUpload("The id is missing or not a number."));
    auto files = store_.removeMedium(kind, *id, *request);
    if (!files) return failureReply(files.failure());
    media_.remove(*files);
    return resultReply({});
}

WebReply ArticleService::changeImage(RequestContext& context) { return changeMedium(context, MediumKind::image); }
WebReply ArticleService::changeVideo(RequestContext& context) { return changeMedium(context, MediumKind::video); }
WebReply ArticleService::removeImage(RequestContext& context) { return removeMedium(context, MediumKind::image); }
WebReply ArticleService::removeVideo(RequestContext& context) { return removeMedium(context, MediumKind::video); }

}  // namespace articleserver
