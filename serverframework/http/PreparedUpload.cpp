#include "serverframework/http/PreparedUpload.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace ostrel {

namespace {

class DataReader final : public UploadFileReader {
public:
    explicit DataReader(Data data) : UploadFileReader(data.size()), data_(std::move(data)) {}

    std::optional<std::size_t> read(char* to, std::size_t most) override {
        const std::size_t length = std::min(most, left());
        if (length > 0) std::memcpy(to, data_.bytes() + offset_, length);
        offset_ += length;
        if (!data_.filePath().empty()) letGo();
        return length;
    }

private:
    /// Removes the pages of a mapped file that were sent from the memory of the process.
    void letGo() {
        constexpr std::size_t step = std::size_t{1} << 20;
        if (offset_ < released_) released_ = 0;
        const std::size_t end = offset_ / step * step;
        if (end <= released_) return;
        auto* begin = const_cast<std::byte*>(data_.bytes()) + released_;
        ::madvise(begin, end - released_, MADV_DONTNEED);
        released_ = end;
    }

    const Data data_;
    std::size_t released_ = 0;
};

class FileReader final : public UploadFileReader {
public:
    /// Closes `descriptor` at its end.
    FileReader(int descriptor, std::size_t size) : UploadFileReader(size), descriptor_(descriptor) {}
    FileReader(const FileReader&) = delete;
    FileReader& operator=(const FileReader&) = delete;
    ~FileReader() override { ::close(descriptor_); }

    static std::unique_ptr<UploadFileReader> open(const std::string& path) {
        // Opened without blocking: the path may name a pipe, which is refused below.
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
        if (descriptor < 0) return nullptr;
        struct stat status {};
        if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode)) {
            ::close(descriptor);
            return nullptr;
        }
        ::posix_fadvise(descriptor, 0, 0, POSIX_FADV_SEQUENTIAL);
        return std::make_unique<FileReader>(descriptor, static_cast<std::size_t>(status.st_size));
    }

    std::optional<std::size_t> read(char* to, std::size_t most) override {
        const std::size_t wanted = std::min(most, left());
        if (wanted == 0) return 0;
        ssize_t count = -1;
        do {
            count = ::pread(descriptor_, to, wanted, static_cast<off_t>(offset_));
        } while (count < 0 && errno == EINTR);
        // Of a file that grew, the bytes that it had when it was opened are sent; a file that shrank is an error.
        if (count <= 0) return std::nullopt;
        offset_ += static_cast<std::size_t>(count);
        return static_cast<std::size_t>(count);
    }

private:
    const int descriptor_;
};

std::unique_ptr<UploadFileReader> readerOf(const UploadPart& part) {
    const auto* file = std::get_if<UploadFile>(&part);
    if (file && !file->path().empty()) return FileReader::open(file->path());
    Data data = file ? file->contents() : std::get<Data>(part);
    if (data.isNull()) return nullptr;
    return std::make_unique<DataReader>(std::move(data));
}

std::string titleOf(const std::string& name, const UploadPart& part) {
    const auto* file = std::get_if<UploadFile>(&part);
    if (!file || file->path().empty()) return name;
    return file->path().substr(file->path().rfind('/') + 1);
}

}  // namespace

std::shared_ptr<PreparedUpload> PreparedUpload::prepare(const UploadBody& body, std::string* error) {
    auto prepared = std::make_shared<PreparedUpload>();
    std::size_t largest = 0;
    for (const auto& [name, content] : body) {
        Part part;
        part.name = name;
        if (const auto* text = std::get_if<std::string>(&content)) {
            part.text = *text;
        } else {
            try {
                part.file = readerOf(content);
            } catch (const std::exception&) {
                // The function that makes a file may run out of memory; the file then counts as missing.
            }
            if (!part.file) {
                *error = "The file \"" + name + "\" cannot be read.";
                return nullptr;
            }
            if (part.file->size() >= largest) {
                largest = part.file->size();
                prepared->title = titleOf(name, content);
            }
            prepared->fileBytes += part.file->size();
        }
        prepared->parts.push_back(std::move(part));
    }
    return prepared;
}

}  // namespace ostrel
