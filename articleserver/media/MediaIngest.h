#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/store/ArticleStore.h"

#include <semaphore>
#include <string>
#include <string_view>

namespace articleserver {

/// Takes every medium into the media folder, from uploads as well as from the sample content: checks the
/// file, makes the thumbnail and stores both. The caller then stores the record. This order means that a
/// crash between the two leaves files without a record, which the next start removes, and never a record
/// without files. The caller removes the files of a record that it does not store. Any thread may call it.
class MediaIngest final {
public:
    explicit MediaIngest(MediaFolder& media);

    /// Stores a JPEG picture, which the caller has flushed. Fills file, thumbnail, width and height of the
    /// result. Faults: `unsupported`, `badInput`, `tooLarge`, `storageFull`, `internal`.
    ServerResult<StoredImage> addImage(IncomingFile& file);
    /// Stores an MP4 clip with a thumbnail made from its JPEG still. The caller has flushed both. Fills file,
    /// thumbnail, width, height and the duration of the clip's index. Has the same faults as addImage().
    ServerResult<StoredVideo> addVideo(IncomingFile& clip, IncomingFile& still);
    /// Stores the square in the middle of a JPEG or PNG picture and returns its media name. The square is
    /// encoded again, so that no metadata of the file, such as the place of a recording, is stored.
    ServerResult<std::string> addAvatar(std::string_view picture);

private:
    struct Thumbnail {
        std::string name;
        /// The size of the picture itself, in pixels.
        int width;
        int height;
    };
    ServerResult<Thumbnail> makeThumbnail(std::string_view jpeg, int side);
    ServerResult<std::string> keep(IncomingFile& file, const std::string& thumbnail);

    MediaFolder& media_;
    /// Admits ServerLimits::picturesAtOnce decoders at the same time.
    std::counting_semaphore<> pictures_;
};

}  // namespace articleserver
