#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ostrel {

/// A file that is written under a hidden temporary name and then takes the place of another one, so that a reader sees
/// the old content or the whole new one. The destructor removes a file that was not moved. The file is locked as long
/// as the object lives (flock), so that a sweep can tell a file being written from one that a crash left behind. One
/// thread at a time.
class PartialFile final {
public:
    /// The end of the temporary name.
    static constexpr std::string_view extension = ".part";

    /// A new empty file in `folder`, which only its owner may read. Absent when that fails; errno says why.
    static std::optional<PartialFile> create(const std::string& folder);
    PartialFile(PartialFile&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)),
          path_(std::exchange(other.path_, {})),
          size_(other.size_) {}
    PartialFile& operator=(PartialFile&&) = delete;
    ~PartialFile();

    const std::string& path() const { return path_; }
    /// For reading; of this object.
    int descriptor() const { return descriptor_; }
    /// False when not all bytes could be written (errno says why): then none of them count as written.
    bool append(std::string_view bytes);
    /// All that was written; absent when it cannot be read.
    std::optional<std::string> readBack() const;
    /// Times of the last use and of the last change, in seconds since 1970.
    bool setTimes(double lastUsed, double modified);
    /// Waits until the bytes are on the disk. After a crash the name of a file that was synchronised before it was
    /// moved stands for all of its bytes.
    bool synchronise();
    /// Moves the file to `path`. A file that was there is replaced and its access mode is kept.
    bool moveTo(const std::string& path);

private:
    PartialFile(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

    int descriptor_;
    /// Empty when the file was moved.
    std::string path_;
    std::size_t size_ = 0;
};

}  // namespace ostrel
