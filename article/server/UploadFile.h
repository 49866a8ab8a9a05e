#pragma once

#include "platform/foundation/values/Data.h"

#include <functional>
#include <memory>
#include <string>
#include <utility>

namespace ostrel {

class UIImage;

/// A file of an upload that need not be in memory when the upload is handed over. Cheap to copy; any thread.
class UploadFile final {
public:
    /// The file at `path` as it is when its turn to be sent comes, read piece by piece while it is sent. A file that is
    /// not there by then ends the upload with an error.
    static UploadFile atPath(std::string path) {
        UploadFile file;
        file.path_ = std::move(path);
        return file;
    }
    /// What `make` returns. It is called on a worker thread of the server framework, once, when the file's turn to be sent
    /// comes, so that what waits costs no memory. Null data ends the upload with an error.
    static UploadFile madeBy(std::function<Data()> make) {
        UploadFile file;
        file.make_ = std::move(make);
        return file;
    }
    /// The picture as a JPEG file, encoded like any other made file. `quality`: 0 (smallest) to 1 (best). An image that is
    /// null or has no pixels ends the upload with an error.
    static UploadFile jpegOf(std::shared_ptr<const UIImage> image, double quality);

    /// Empty for a file that is made.
    const std::string& path() const { return path_; }
    /// The whole file: mapped, or made now on the calling thread. Null when there is none.
    Data contents() const {
        if (make_) return make_();
        return path_.empty() ? Data() : Data::mapFile(path_);
    }

private:
    UploadFile() = default;

    std::string path_;
    std::function<Data()> make_;
};

}  // namespace ostrel
