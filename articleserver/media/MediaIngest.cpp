#include "articleserver/media/MediaIngest.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/media/Mp4File.h"
#include "articleserver/media/ServerPicture.h"

namespace articleserver {

namespace {

constexpr int thumbnailQuality = 85;
constexpr int avatarQuality = 88;

}  // namespace

MediaIngest::MediaIngest(MediaFolder& media) : media_(media), pictures_(ServerLimits::picturesAtOnce) {}

ServerResult<MediaIngest::Thumbnail> MediaIngest::makeThumbnail(std::string_view jpeg, int side) {
    // Decoding takes much memory, so only a few threads decode at the same time; the others wait here.
    pictures_.acquire();
    auto thumbnail = ServerPicture::thumbnail(jpeg, side);
    std::string bytes = thumbnail ? thumbnail->picture.jpeg(thumbnailQuality) : std::string();
    pictures_.release();
    if (!thumbnail) return thumbnail.failure();
    auto name = media_.add(bytes, "jpg");
    if (!name) return name.failure();
    return Thumbnail{*name, thumbnail->width, thumbnail->height};
}

ServerResult<std::string> MediaIngest::keep(IncomingFile& file, const std::string& thumbnail) {
    auto name = file.keep();
    if (!name) media_.remove({thumbnail});
    return name;
}

ServerResult<StoredImage> MediaIngest::addImage(IncomingFile& file) {
    auto thumbnail = makeThumbnail(file.bytes(), ServerLimits::thumbnailSide);
    if (!thumbnail) return thumbnail.failure();
    auto name = keep(file, thumbnail->name);
    if (!name) return name.failure();
    return StoredImage{0, *name, thumbnail->name, thumbnail->width, thumbnail->height, ""};
}

ServerResult<StoredVideo> MediaIngest::addVideo(IncomingFile& clip, IncomingFile& still) {
    auto facts = inspectMp4(clip.descriptor());
    if (!facts) return facts.failure();
    auto thumbnail = makeThumbnail(still.bytes(), ServerLimits::stillSide);
    if (!thumbnail) return thumbnail.failure();
    auto name = keep(clip, thumbnail->name);
    if (!name) return name.failure();
    StoredVideo video;
    video.file = *name;
    video.thumbnail = thumbnail->name;
    video.width = facts->width;
    video.height = facts->height;
    video.duration = facts->duration;
    return video;
}

ServerResult<std::string> MediaIngest::addAvatar(std::string_view picture) {
    auto decoded = ServerPicture::decode(picture, ServerLimits::avatarSide);
    if (!decoded) return decoded.failure();
    return media_.add(decoded->squared(ServerLimits::storedAvatarSide).jpeg(avatarQuality), "jpg");
}

}  // namespace articleserver
