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

ServerFailure badInput(std::string text) { return {ServerFault::badInput, std::move(text)}; }

ServerResult<std::int64_t> positionOf(const std::string& text) {
    auto position = decimalId(text);
    if (!position || *position > ServerLimits::position) {
        return badInput("The position is not a number from 0 on.");
    }
    return *position;
}

ServerResult<ServerDone> checkCaption(const std::string& text) {
    if (text.size() <= ServerLimits::captionBytes) return ServerDone{};
    return ServerFailure{ServerFault::tooLarge, "The caption is too long."};
}

/// Seconds.
ServerResult<double> durationOf(const std::string& text) {
    double seconds = -1;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = fault == std::errc() && end == text.data() + text.size();
    if (!isNumber || !(seconds >= 0) || seconds > ServerLimits::durationSeconds) {
        return badInput("The duration is not a number of seconds.");
    }
    return seconds;
}

}  // namespace

/// What an upload brings.
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

ServerResult<ArticleService::Upload> ArticleService::uploadOf(Visit& visit) {
    auto user = signedInOnly(visit);
    if (!user) return user.failure();
    auto request = publishRequest(visit, *user);
    if (!request) return request.failure();
    const WebFields& query = visit.request.query;
    auto article = query.find("article_id");
    auto value = query.find("value");
    if (article == query.end() || value == query.end()) {
        return badInput("The article or the position of the upload is missing.");
    }
    auto id = decimalId(article->second);
    if (!id) return badInput("The id of the article is not a number.");
    auto position = positionOf(value->second);
    if (!position) return position.failure();
    return Upload{std::move(*request), {*id, *position}};
}

WebIntake ArticleService::admit(Visit& visit, std::uint64_t length, const Admission& admission) {
    const auto refused = [&](const ServerFailure& failure) {
        return WebIntake{failureReply(failure), nullptr};
    };
    auto upload = uploadOf(visit);
    if (!upload) return refused(upload.failure());
    auto isAuthor = store_.checkAuthor(upload->place.article, upload->request.user);
    if (!isAuthor) return refused(isAuthor.failure());
    if (length == 0) return refused(badInput("The upload is empty."));
    if (length > admission.bytes()) return refused({ServerFault::tooLarge, "The upload is too large."});
    if (length > media_.room()) return refused({ServerFault::storageFull, "The server's storage is full."});
    std::shared_ptr<void> lane(nullptr, [uploads = uploads_](void*) { --*uploads; });
    if (++*uploads_ > ServerLimits::uploadsAtOnce) {
        return refused({ServerFault::busy, "The server is busy. Try again in a moment."});
    }
    return {std::nullopt, std::make_shared<UploadReceiver>(visit.request.header("content-type"), media_,
                                                           admission.files, std::move(lane))};
}

WebIntake ArticleService::admitImage(Visit& visit, std::uint64_t length) {
    return admit(visit, length, {{{imagePart, "jpg", ServerLimits::imageFile}}});
}

WebIntake ArticleService::admitVideo(Visit& visit, std::uint64_t length) {
    return admit(
        visit, length,
        {{{stillPart, "jpg", ServerLimits::stillFile}, {videoPart, "mp4", ServerLimits::videoFile}}});
}

WebReply ArticleService::uploadImage(Visit& visit) {
    auto upload = uploadOf(visit);
    if (!upload) return failureReply(upload.failure());
    auto& body = static_cast<UploadReceiver&>(*visit.request.receiver);
    auto finished = body.finish();
    if (!finished) return failureReply(finished.failure());
    const std::string text = body.field("text").value_or("");
    auto caption = checkCaption(text);
    if (!caption) return failureReply(caption.failure());

    auto taken = door_.takeImage(body.file(imagePart));
    if (!taken) return failureReply(taken.failure());
    StoredImage& image = *taken;
    image.text = text;
    auto added = store_.addImage(upload->request, upload->place, image);
    if (!added || added->isRepeat) media_.remove({image.file, image.thumbnail});
    if (!added) return failureReply(added.failure());
    if (added->isRepeat) return jsonReply(200, {{"id", added->id}});
    image.id = added->id;
    return jsonReply(200, imageJson(image, baseUrl(visit.request)));
}

WebReply ArticleService::uploadVideo(Visit& visit) {
    auto upload = uploadOf(visit);
    if (!upload) return failureReply(upload.failure());
    auto& body = static_cast<UploadReceiver&>(*visit.request.receiver);
    auto finished = body.finish();
    if (!finished) return failureReply(finished.failure());
    StoredVideo video;
    video.text = body.field("text").value_or("");
    auto caption = checkCaption(video.text);
    if (!caption) return failureReply(caption.failure());
    for (auto [name, place] :
         {std::pair("altitude", &video.altitude), std::pair("longitude", &video.longitude),
          std::pair("latitude", &video.latitude)}) {
        *place = body.field(name).value_or("");
        if (place->size() > ServerLimits::placeCharacters) {
            return failureReply(badInput("The place of the video is too long."));
        }
    }
    const auto field = body.field("duration");
    auto duration = field ? durationOf(*field) : ServerResult<double>(0);
    if (!duration) return failureReply(duration.failure());

    auto taken = door_.takeVideo(body.file(videoPart), body.file(stillPart));
    if (!taken) return failureReply(taken.failure());
    video.file = taken->file;
    video.thumbnail = taken->thumbnail;
    video.width = taken->width;
    video.height = taken->height;
    // The index of the clip has the say when the upload gives no duration.
    video.duration = field ? *duration : taken->duration;
    auto added = store_.addVideo(upload->request, upload->place, video);
    if (!added || added->isRepeat) media_.remove({video.file, video.thumbnail});
    if (!added) return failureReply(added.failure());
    if (added->isRepeat) return jsonReply(200, {{"id", added->id}});
    video.id = added->id;
    return jsonReply(200, videoJson(video, baseUrl(visit.request)));
}

WebReply ArticleService::changeMedium(Visit& visit, MediumKind kind) {
    auto user = signedInOnly(visit);
    if (!user) return failureReply(user.failure());
    auto request = publishRequest(visit, *user);
    if (!request) return failureReply(request.failure());
    const WebFields& query = visit.request.query;
    auto given = query.find("id");
    auto id = given == query.end() ? std::nullopt : decimalId(given->second);
    if (!id) return failureReply(badInput("The id is missing or not a number."));
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
        return failureReply(badInput("There is neither a caption nor a position."));
    }
    auto changed = store_.changeMedium(kind, *id, *request, change);
    if (!changed) return failureReply(changed.failure());
    return resultReply({});
}

WebReply ArticleService::removeMedium(Visit& visit, MediumKind kind) {
    auto user = signedInOnly(visit);
    if (!user) return failureReply(user.failure());
    auto request = publishRequest(visit, *user);
    if (!request) return failureReply(request.failure());
    auto given = visit.request.query.find("id");
    auto id = given == visit.request.query.end() ? std::nullopt : decimalId(given->second);
    if (!id) return failureReply(badInput("The id is missing or not a number."));
    auto files = store_.removeMedium(kind, *id, *request);
    if (!files) return failureReply(files.failure());
    media_.remove(*files);
    return resultReply({});
}

WebReply ArticleService::changeImage(Visit& visit) { return changeMedium(visit, MediumKind::image); }
WebReply ArticleService::changeVideo(Visit& visit) { return changeMedium(visit, MediumKind::video); }
WebReply ArticleService::removeImage(Visit& visit) { return removeMedium(visit, MediumKind::image); }
WebReply ArticleService::removeVideo(Visit& visit) { return removeMedium(visit, MediumKind::video); }

}  // namespace articleserver
