#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ostrel {

/// A file under way, which goes when this object does unless it was moved to its place. It is locked as long as the
/// object lives (flock), so that others can tell it from what a crash left over.
class PartialFile final {
public:
    static constexpr std::string_view extension = ".part";

    /// A new empty file in `folder`, for its owner's eyes only. None when that fails; errno says why.
    static std::optional<PartialFile> create(const std::string& folder);
    PartialFile(PartialFile&& other) noexcept
        : descriptor_(std::exchange(other.descriptor_, -1)),
          path_(std::exchange(other.path_, {})),
          size_(other.size_) {}
    PartialFile& operator=(PartialFile&&) = delete;
    ~PartialFile();

    const std::string& path() const { return path_; }
    /// For reading.
    int descriptor() const { return descriptor_; }
    /// False when not all of it could be written; then nothing of it counts as written.
    bool append(std::string_view bytes);
    /// All that was written, for what cannot go on as a file.
    std::optional<std::string> readBack() const;
    /// Writes it to the disk and moves it to `path`, with these times in seconds since 1970.
    bool moveTo(const std::string& path, double lastUsed, double modified);

private:
    PartialFile(int descriptor, std::string path) : descriptor_(descriptor), path_(std::move(path)) {}

    int descriptor_;
    /// Empty when it was moved.
    std::string path_;
    std::size_t size_ = 0;
};

}  // namespace ostrel
