#pragma once

#include "platform/foundation/values/Data.h"
#include "serverframework/media/MediumFile.h"
#include "serverframework/media/PartialFile.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace ostrel {

/// Media kept in a folder of files with a bound on their total size; what was used longest ago goes first. Several
/// processes may share the folder: a file gets its name when it is complete, is never written to afterwards, and is
/// checked before it is believed. What is damaged is dropped. Any thread; all but `find` of a small medium may take long.
class MediaDiskCache final {
public:
    struct Limits {
        std::size_t maximumBytes = std::size_t{1024} * 1024 * 1024;
        std::size_t maximumFiles = 20'000;
        /// Larger media are checked by `Checking::all` only, which takes a processor 0.1 ms a megabyte and reads the disk.
        std::size_t checkedAtOnce = std::size_t{4} * 1024 * 1024;
        /// Up to this size a medium is read, above it is mapped.
        std::size_t readAtOnce = std::size_t{256} * 1024;
        /// Unfinished files that nobody holds any more go when they are older than this, in seconds.
        double leftOverSeconds = 60;
    };
    struct Medium {
        Data data;
        MediumFacts facts;
    };
    struct Lookup {
        std::optional<Medium> medium;
        /// It is there but large and has not been checked by this object: ask again with `Checking::all`.
        bool needsChecking = false;
    };
    enum class Checking { small, all };

    MediaDiskCache(std::string folder, Limits limits);

    /// "$XDG_CACHE_HOME/ostrel/media", or below "$HOME/.cache" (XDG base directories).
    static std::string defaultFolder();

    Lookup find(const std::string& url, Checking checking);
    /// A file in the cache's folder for a medium that is arriving.
    std::optional<PartialFile> newFile() const;
    /// Keeps a medium, in `file` if its bytes are there already. A medium of more than half of the bound is not kept,
    /// nor is one for which the disk has no room.
    void keep(const std::string& url, const MediumFacts& facts, const Data& data,
              std::optional<PartialFile> file);
    /// Takes over until when a kept medium is fresh.
    void refresh(const std::string& url, const MediumFacts& facts);
    void remove(const std::string& url);

private:
    struct Checked {
        std::uint64_t inode = 0;
        std::uint64_t checksum = 0;
    };

    std::string pathFor(const std::string& url) const { return folder_ + "/" + MediumFile::nameFor(url); }
    /// Whether the bytes of the medium are those that were written; absent when another file has taken the place.
    std::optional<bool> isIntact(const MediumFile& medium, const std::string& path,
                                 std::uint64_t inode) const;
    bool isChecked(const std::string& path, const Checked& facts) const;
    void noteChecked(const std::string& path, const Checked& facts);
    void makeRoom(std::size_t bytes);
    void sweep(std::size_t bytes);

    const std::string folder_;
    const Limits limits_;

    mutable std::mutex mutex_;
    std::unordered_map<std::string, Checked> checked_;  // guarded by mutex_

    /// One writer at a time; guards what follows.
    std::mutex writing_;
    std::optional<std::size_t> totalBytes_;
    std::size_t totalFiles_ = 0;
    /// Since the folder was last looked through: what other processes add is only seen then.
    std::size_t writtenBytes_ = 0;
};

}  // namespace ostrel
