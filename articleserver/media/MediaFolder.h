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

/// A media file during its reception. The destructor deletes the file unless keep() succeeded. One thread at
/// a time uses the object.
class IncomingFile final {
public:
    IncomingFile(const IncomingFile&) = delete;
    IncomingFile& operator=(const IncomingFile&) = delete;
    ~IncomingFile();

    /// Faults: `storageFull`, `internal`.
    ServerResult<void> append(std::string_view bytes);
    /// Writes the buffered bytes into the file, so that `descriptor` and `bytes` give the whole content.
    ServerResult<void> flush();
    /// Flushes the file, waits until it is on the disk and gives it its name, which is the result.
    ServerResult<std::string> keep();

    std::uint64_t size() const { return size_; }
    int descriptor() const { return descriptor_; }
    /// The whole file mapped into memory; empty when the mapping fails.
    std::string_view bytes();

private:
    friend class MediaFolder;
    IncomingFile(int descriptor, std::string path, std::string name)
        : descriptor_(descriptor), path_(std::move(path)), name_(std::move(name)) {}

    int descriptor_;
    /// Empty after keep().
    std::string path_;
    std::string name_;
    std::string pending_;
    std::uint64_t size_ = 0;
    std::uint64_t written_ = 0;
    void* mapping_ = nullptr;
};

/// The folder of media files. This class makes their names, which are random, and never makes a path from a
/// name of another form. The content of a name never changes. Any thread may call it.
class MediaFolder final {
public:
    struct File {
        std::string path;
        std::string contentType;
        std::string entityTag;  ///< with its quotes
        std::uint64_t size = 0;
        ServerTime modified = 0;
    };

    explicit MediaFolder(std::filesystem::path folder) : folder_(std::move(folder)) {}

    /// True for 32 hexadecimal digits followed by ".jpg", ".png" or ".mp4".
    static bool isName(std::string_view name);

    /// Creates the folder, and removes the files that no stored record names; a crash leaves such files.
    ServerResult<void> prepare(const std::vector<std::string>& named);

    /// Stores the bytes under a new name after they are on the disk. Faults: `storageFull`, `internal`.
    ServerResult<std::string> add(std::string_view bytes, std::string_view extension);
    /// Begins a file that arrives in pieces. Faults: `storageFull`, `internal`.
    ServerResult<std::unique_ptr<IncomingFile>> receive(std::string_view extension);
    /// The number of bytes that uploads may store until only ServerLimits::freeSpace is left.
    std::uint64_t freeBytes() const;

    /// Absent when the folder has no such file.
    std::optional<File> find(std::string_view name) const;
    /// Ignores names that the folder does not have.
    void remove(const std::vector<std::string>& names);

private:
    std::filesystem::path folder_;
};

}  // namespace articleserver
