#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/common/ServerText.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace articleserver {

/// A media file that is still being received. It goes with this object unless it is kept. Owned by one thread at a time.
class IncomingFile final {
public:
    IncomingFile(const IncomingFile&) = delete;
    IncomingFile& operator=(const IncomingFile&) = delete;
    ~IncomingFile();

    /// StorageFull, Internal.
    ServerResult<ServerDone> append(std::string_view bytes);
    /// Puts everything in the file, for `descriptor` and `bytes` to be read.
    ServerResult<ServerDone> flush();
    /// Flushes it and brings it to the disk under its name.
    ServerResult<std::string> keep();

    std::uint64_t size() const { return size_; }
    int descriptor() const { return descriptor_; }
    /// The whole file as memory, mapped; empty when that fails.
    std::string_view bytes();

private:
    friend class MediaFolder;
    IncomingFile(int descriptor, std::string path, std::string name)
        : descriptor_(descriptor), path_(std::move(path)), name_(std::move(name)) {}

    int descriptor_;
    std::string path_;  ///< empty when it was kept
    std::string name_;
    std::string pending_;
    std::uint64_t size_ = 0;
    std::uint64_t written_ = 0;
    void* mapping_ = nullptr;
};

/// The folder of media files. Names are random and made here, and a name that this class did not make
/// never becomes a path. A file never changes under its name. Any thread may call it.
class MediaFolder final {
public:
    struct File {
        std::string path;
        std::string contentType;
        std::string entityTag;  ///< quoted
        std::uint64_t size = 0;
        ServerTime modified = 0;
    };

    explicit MediaFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// "jpg", "png" or "mp4" behind 32 hexadecimal digits.
    static bool isName(std::string_view name);

    /// Creates the folder and removes what no stored record names, left over from a crash.
    ServerResult<ServerDone> prepare(const std::vector<std::string>& named);

    /// Keeps the bytes under a new name once they are wholly on the disk. StorageFull, Internal.
    ServerResult<std::string> add(std::string_view bytes, std::string_view extension);
    /// A new file to be received piece by piece. StorageFull, Internal.
    ServerResult<std::unique_ptr<IncomingFile>> receive(std::string_view extension);
    /// Bytes that may still be stored, leaving ServerLimits::freeSpace.
    std::uint64_t room() const;

    std::optional<File> find(std::string_view name) const;
    /// A name that is not there is no error.
    void remove(const std::vector<std::string>& names);

private:
    std::filesystem::path folder_;
};

}  // namespace articleserver
