#pragma once

#include "platform/foundation/values/NSError.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The calls to the system with which files are written. Each returns what the system's own does: a number, or -1 with
/// errno. Tests derive from it to let one fail. Any thread.
class OutputFiles {
public:
    virtual ~OutputFiles() = default;
    /// A file without a name in `folder`; -1 with EOPNOTSUPP, EISDIR or ENOENT where the file system has none.
    virtual int openUnnamed(const std::string& folder);
    /// A new file; `pattern` ends in "XXXXXX", which is replaced.
    virtual int openTemporary(std::string& pattern);
    virtual long write(int descriptor, const std::uint8_t* bytes, std::size_t count, std::int64_t offset);
    virtual int synchronise(int descriptor);
    /// Gives an unnamed file a name.
    virtual int link(int descriptor, const std::string& path);
    virtual int rename(const std::string& from, const std::string& to);
};

/// A file under way to its place. While it is written it has no name (where the file system can do that), so that even a
/// killed process leaves nothing; it appears whole, in place of what was there, or not at all. One thread.
class OutputFile final {
public:
    /// Null when nothing can be written there: a folder, a device, a place without permission. The folder is made when
    /// only it is missing.
    static std::unique_ptr<OutputFile> create(std::shared_ptr<OutputFiles> files, const std::string& path,
                                              std::optional<NSError>* error);
    /// Leaves nothing behind unless `publish` succeeded.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Bytes written at `offset`, all of them, or a negative errno.
    int write(std::int64_t offset, const std::uint8_t* bytes, int count);
    /// Bytes read at `offset`, fewer at the end, or a negative errno.
    int read(std::int64_t offset, std::uint8_t* bytes, int count) const;
    std::int64_t size() const { return size_; }
    /// Puts the file, on the disk, under its name. Absent when that was done.
    std::optional<NSError> publish();

    OutputFile(std::shared_ptr<OutputFiles> files, std::string path);

private:
    bool openFile();

    std::shared_ptr<OutputFiles> files_;
    std::string path_;
    /// Of the temporary file; empty while it has none.
    std::string temporaryPath_;
    std::string madeFolder_;
    int descriptor_ = -1;
    std::int64_t size_ = 0;
    bool isPublished_ = false;
};

}  // namespace ostrel
