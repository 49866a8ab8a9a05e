#include "article/server/UploadFile.h"

#include "platform/graphics/UIImage.h"

#include <utility>

namespace ostrel {

UploadFile UploadFile::jpegOf(std::shared_ptr<const UIImage> image, double quality) {
    return madeBy(
        [image = std::move(image), quality] { return image ? UIImageJPEGRepresentation(*image, quality) : Data(); });
}

}  // namespace ostrel
