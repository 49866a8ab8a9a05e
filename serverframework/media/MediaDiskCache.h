#pragma once

#include "platform/foundation/resources/PartialFile.h"
#include "platform/foundation/values/Data.h"
#include "serverframework/http/ClientLimits.h"
#include "serverframework/media/MediumFile.h"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <unordered_map>

namespace ostrel {

/// Keeps media in a folder of files with a bound on their total size; the media used longest ago are removed first.
/// Several processes may share the folder: a file gets its name when it is complete, is never written to afterwards,
/// and is checked before it is used. Damaged files are removed. Any thread; all operations block, and only `find` of a
/// small medium is short.
class MediaDiskCache final {
public:
    using Limits = MediaDiskLimits;
    struct Medium {
        Data data;
        MediumFacts facts;
    };
    struct Lookup {
        std::optional<Medium> medium;
        /// The medium is kept, but it is large and this object has not checked it: call again with `Checking::all`.
        bool needsChecking = false;
    };
    enum class Checking { small, all };

    MediaDiskCache(std::string folder, Limits limits);

    /// "$XDG_CACHE_HOME/ostrel/media", or below "$HOME/.cache" (XDG base directories).
    static std::string defaultFolder();

    Lookup find(const std::string& url, Checking checking);
    /// A file in the cache's folder for a medium that is arriving; absent when it cannot be made.
    std::optional<PartialFile> newFile() const;
    /// Keeps a medium. `file`, when given, already holds its bytes. A medium that is larger than half of the bound is
    /// not kept. A medium for which the disk has no room is not kept either.
    void keep(const std::string& url, const MediumFacts& facts, const Data& data, std::optional<PartialFile> file);
    /// Notes until when a kept medium is fresh.
    void refresh(const std::string& url, const MediumFacts& facts);
    void remove(const std::string& url);

private:
    struct Checked {
        std::uint64_t inode = 0;
        std::uint64_t checksum = 0;
    };

    std::string pathFor(const std::string& url) const { return folder_ + "/" + MediumFile::nameFor(url); }
    /// Whether the bytes of the medium are those that were written. Absent when another file has replaced this one.
    std::optional<bool> isIntact(const MediumFile& medium, const std::string& path, std::uint64_t inode) const;
    bool isChecked(const std::string& path, const Checked& facts) const;
    void noteChecked(const std::string& path, const Checked& facts);
    void makeRoom(std::size_t bytes);
    void sweep(std::size_t bytes);

    const std::string folder_;
    const Limits limits_;

    /// Guards the member that follows.
    mutable std::mutex mutex_;
    /// The files that were checked, by path.
    std::unordered_map<std::string, Checked> checked_;

    /// Held while a file is written; guards the members that follow.
    std::mutex writing_;
    /// Absent before the first sweep.
    std::optional<std::size_t> totalBytes_;
    std::size_t totalFiles_ = 0;
    /// The bytes written since the last sweep, which is when the files of other processes are counted.
    std::size_t writtenBytes_ = 0;
};

}  // namespace ostrel
