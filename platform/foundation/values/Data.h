#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>

namespace ostrel {

/// Immutable shared bytes. Copies share the storage, which may be memory or a mapped file; any thread.
class Data final {
public:
    Data() = default;
    static Data copy(std::span<const std::byte> bytes);
    static Data copy(std::string_view bytes);
    /// Takes the string's storage without copying.
    static Data take(std::string bytes);
    /// Maps a file read-only. Null data (isNull) with a sentence in `error` when the file cannot be opened.
    /// The file must not shrink while the data lives.
    static Data mapFile(const std::string& path, std::string* error = nullptr);

    /// `length` bytes from `offset` on, both clamped to the size. Shares the storage; has a file path only
    /// when it is the whole data. A slice of null data is null.
    Data slice(std::size_t offset, std::size_t length) const;

    /// Null means absent data, which differs from empty data.
    bool isNull() const { return storage_ == nullptr; }
    explicit operator bool() const { return !isNull(); }
    std::size_t size() const { return size_; }
    bool isEmpty() const { return size_ == 0; }
    const std::byte* bytes() const { return bytes_; }
    std::span<const std::byte> span() const { return {bytes_, size_}; }
    std::string_view view() const { return {reinterpret_cast<const char*>(bytes_), size_}; }
    /// The path of the mapped file; empty for data in memory and for a part of a file.
    const std::string& filePath() const;

private:
    struct Storage;
    std::shared_ptr<const Storage> storage_;
    const std::byte* bytes_ = nullptr;
    std::size_t size_ = 0;
};

}  // namespace ostrel
