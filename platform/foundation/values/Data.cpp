#include "platform/foundation/values/Data.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ostrel {

struct Data::Storage {
    std::string memory;
    std::string path;
    void* mapping = nullptr;
    std::size_t mappedSize = 0;

    Storage() = default;
    Storage(const Storage&) = delete;
    Storage& operator=(const Storage&) = delete;
    ~Storage() {
        if (mapping) ::munmap(mapping, mappedSize);
    }
};

namespace {

class FileDescriptor final {
public:
    explicit FileDescriptor(const std::string& path)
        : descriptor_(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }
    int get() const { return descriptor_; }

private:
    int descriptor_;
};

std::string sentence(const std::string& path, const std::string& reason) {
    return "The file \"" + path + "\" cannot be opened: " + reason + ".";
}

}  // namespace

Data Data::copy(std::span<const std::byte> bytes) {
    return take(std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}

Data Data::copy(std::string_view bytes) { return take(std::string(bytes)); }

Data Data::take(std::string bytes) {
    auto storage = std::make_shared<Storage>();
    storage->memory = std::move(bytes);
    Data data;
    data.bytes_ = reinterpret_cast<const std::byte*>(storage->memory.data());
    data.size_ = storage->memory.size();
    data.storage_ = std::move(storage);
    return data;
}

Data Data::mapFile(const std::string& path, std::string* error) {
    const auto fail = [&](const std::string& reason) {
        if (error) *error = sentence(path, reason);
        return Data();
    };
    // Opened without blocking, because a path may name a pipe; it is rejected below.
    const FileDescriptor file(path);
    if (file.get() < 0) return fail(std::generic_category().message(errno));
    struct stat status {};
    if (::fstat(file.get(), &status) != 0) return fail(std::generic_category().message(errno));
    if (!S_ISREG(status.st_mode)) return fail("it is no regular file");

    auto storage = std::make_shared<Storage>();
    storage->path = path;
    Data data;
    data.size_ = static_cast<std::size_t>(status.st_size);
    data.bytes_ = reinterpret_cast<const std::byte*>(storage->memory.data());
    if (data.size_ > 0) {  // mmap rejects an empty mapping
        void* mapping = ::mmap(nullptr, data.size_, PROT_READ, MAP_PRIVATE, file.get(), 0);
        if (mapping == MAP_FAILED) return fail(std::generic_category().message(errno));
        storage->mapping = mapping;
        storage->mappedSize = data.size_;
        data.bytes_ = static_cast<const std::byte*>(mapping);
    }
    data.storage_ = std::move(storage);
    return data;
}

Data Data::slice(std::size_t offset, std::size_t length) const {
    Data part = *this;
    offset = std::min(offset, size_);
    part.size_ = std::min(length, size_ - offset);
    if (part.size_ > 0 || offset > 0) part.bytes_ = bytes_ + offset;
    return part;
}

const std::string& Data::filePath() const {
    static const std::string none;
    return storage_ && size_ == storage_->mappedSize ? storage_->path : none;
}

}  // namespace ostrel
