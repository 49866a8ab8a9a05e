#pragma once

#include "ServerResult.h"
#include "ServerText.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

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
    std::optional<File> find(std::string_view name) const;
    /// A name that is not there is no error.
    void remove(const std::vector<std::string>& names);

private:
    std::filesystem::path folder_;
};

}  // namespace ostrel
