#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/store/ArticleStore.h"

#include <semaphore>
#include <string>
#include <string_view>

namespace articleserver {

/// Where every medium comes in, from an upload or from the sample content: it judges the file, makes the thumbnail and
/// keeps both in the media folder. Files come first, rows second: a crash in between leaves files that the next start
/// removes, never rows without files. The caller removes the files of a record that it does not store. Any thread.
class MediaDoor final {
public:
    explicit MediaDoor(MediaFolder& media);

    /// Keeps a JPEG picture; fills file, thumbnail, width and height. `file` is flushed. Unsupported, BadInput, TooLarge,
    /// StorageFull, Internal.
    ServerResult<StoredImage> takeImage(IncomingFile& file);
    /// Keeps an MP4 clip and what its JPEG still becomes; fills file, thumbnail, width and height, and the duration as the
    /// clip's own index says. Both files are flushed. Failures as for pictures.
    ServerResult<StoredVideo> takeVideo(IncomingFile& clip, IncomingFile& still);
    /// The media name of the middle square of a JPEG or PNG picture. It is encoded anew, so that nothing else of the file,
    /// such as the place where it was taken, is kept.
    ServerResult<std::string> takeAvatar(std::string_view picture);

private:
    struct Thumbnail {
        std::string name;
        int width;  ///< of the picture itself
        int height;
    };
    ServerResult<Thumbnail> makeThumbnail(std::string_view jpeg, int side);
    ServerResult<std::string> keep(IncomingFile& file, const std::string& thumbnail);

    MediaFolder& media_;
    /// Pictures that may be decoded now.
    std::counting_semaphore<> pictures_;
};

}  // namespace articleserver
