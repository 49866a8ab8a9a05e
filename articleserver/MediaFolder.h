#pragma once

#include "ServerResult.h"
#include "ServerText.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
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
    /// A name for a file that is added later, with addAs.
    static std::string newName(std::string_view extension);
    ServerResult<ServerDone> addAs(const std::string& name, std::string_view bytes);
    std::optional<File> find(std::string_view name) const;
    bool holds(std::string_view name) const;

    /// Asked by `find` for a file that is not there; it may add it before it returns. Called from any thread; none when
    /// empty. Set while nobody calls `find`, or by a supplier that ends.
    using Supplier = std::function<void(std::string_view name)>;
    void setSupplier(Supplier supplier);

    /// Writes a file once it is wholly on the disk, in the place of one that may be there. StorageFull, Internal.
    static ServerResult<ServerDone> write(const std::string& path, std::string_view bytes);
    /// A name that is not there is no error.
    void remove(const std::vector<std::string>& names);

private:
    std::optional<File> factsOf(std::string_view name) const;

    std::filesystem::path folder_;
    mutable std::mutex supplierMutex_;
    Supplier supplier_;  ///< guarded by supplierMutex_
};

}  // namespace ostrel
