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
    /// The file at `path`, which is opened when its turn to be sent comes and read piece by piece while it is sent. A
    /// file that does not exist then ends the upload with an error.
    static UploadFile atPath(std::string path) {
        UploadFile file;
        file.path_ = std::move(path);
        return file;
    }
    /// The data that `make` returns. A worker thread of the server framework calls `make` once, when the file's turn to
    /// be sent comes, so that files in a backlog take no memory. Null data ends the upload with an error.
    static UploadFile madeBy(std::function<Data()> make) {
        UploadFile file;
        file.make_ = std::move(make);
        return file;
    }
    /// The picture as a JPEG file, encoded like any other made file. `quality`: 0 (smallest) to 1 (best). An image that
    /// is null or has no pixels ends the upload with an error.
    static UploadFile jpegOf(std::shared_ptr<const UIImage> image, double quality);

    /// Empty for a file that a function makes.
    const std::string& path() const { return path_; }
    /// The whole file, mapped or made now on the calling thread; null when it does not exist.
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
