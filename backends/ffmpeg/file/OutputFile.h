#pragma once

#include "platform/foundation/values/NSError.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace ostrel {

/// The system calls that write files. Each returns a number as the system call does, or -1 with errno. Tests derive
/// from this class to let a call fail. Any thread.
class OutputFiles {
public:
    virtual ~OutputFiles() = default;
    /// Opens a file without a name in `folder`; -1 with EOPNOTSUPP, EISDIR or ENOENT when the file system does not
    /// support such files.
    virtual int openUnnamed(const std::string& folder);
    /// Makes a new file; `pattern` ends in "XXXXXX", which becomes a unique text.
    virtual int openTemporary(std::string& pattern);
    virtual long write(int descriptor, const std::uint8_t* bytes, std::size_t count, std::int64_t offset);
    virtual int synchronise(int descriptor);
    /// Gives a name to an unnamed file.
    virtual int link(int descriptor, const std::string& path);
    virtual int rename(const std::string& from, const std::string& to);
};

/// A file that is being written. Until it is whole the file has no name (where the file system supports that), so that
/// even a killed process leaves no file behind. `publish` replaces the file at the destination in one step. One thread.
class OutputFile final {
public:
    /// Null when the path cannot be written: a folder, a device, a place without permission. A missing last folder of
    /// the path is made.
    static std::unique_ptr<OutputFile> create(std::shared_ptr<OutputFiles> files, const std::string& path,
                                              std::optional<NSError>* error);
    /// Removes the file, and a folder that `create` made, unless `publish` has succeeded.
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /// Writes all bytes at `offset`. Returns their count, or a negative errno.
    int write(std::int64_t offset, const std::uint8_t* bytes, int count);
    /// Reads at `offset`. Returns the count of bytes, smaller at the end of the file, or a negative errno.
    int read(std::int64_t offset, std::uint8_t* bytes, int count) const;
    std::int64_t size() const { return size_; }
    /// Writes the file through to the disk, then gives it its name. Absent on success.
    std::optional<NSError> publish();

    OutputFile(std::shared_ptr<OutputFiles> files, std::string path);

private:
    bool openFile();

    std::shared_ptr<OutputFiles> files_;
    std::string path_;
    /// The path of the temporary file; empty while the file has no name.
    std::string temporaryPath_;
    std::string madeFolder_;
    int descriptor_ = -1;
    std::int64_t size_ = 0;
    bool isPublished_ = false;
};

}  // namespace ostrel
