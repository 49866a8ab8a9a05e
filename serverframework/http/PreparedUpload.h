#pragma once

#include "article/server/OstrelServer.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace ostrel {

/// Reads the bytes of one file of an upload in order, and from the start once more when the request is repeated. One
/// thread at a time.
class UploadFileReader {
public:
    virtual ~UploadFileReader() = default;

    std::size_t size() const { return size_; }
    /// Copies the next bytes and returns their number, 0 at the end. Absent when the file was cut short after it was
    /// opened.
    virtual std::optional<std::size_t> read(char* to, std::size_t most) = 0;
    void rewind(std::size_t offset) { offset_ = offset; }

protected:
    explicit UploadFileReader(std::size_t size) : size_(size) {}
    std::size_t left() const { return size_ - offset_; }

    const std::size_t size_;
    std::size_t offset_ = 0;
};

/// A body of the type multipart/form-data whose files have been made or opened.
struct PreparedUpload {
    struct Part {
        std::string name;
        std::string text;
        /// Null for a field.
        std::unique_ptr<UploadFileReader> file;
    };
    std::vector<Part> parts;
    /// The name that users see for the upload: that of its largest file; empty when it has no file.
    std::string title;
    std::uint64_t fileBytes = 0;

    /// Makes and opens the files of `body`; blocks, perhaps for long. Null, with a sentence in `error`, when a file
    /// cannot be made or opened.
    static std::shared_ptr<PreparedUpload> prepare(const UploadBody& body, std::string* error);
};

}  // namespace ostrel
