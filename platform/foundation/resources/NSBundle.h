#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// A folder of resources: files found by name and type, and string tables "<language>.lproj/<table>.strings".
/// Tables are read once. Any thread.
class NSBundle final {
public:
    /// Null when `path` is not a folder.
    static std::shared_ptr<NSBundle> bundleWithPath(const std::string& path);
    /// The application's own bundle: the one that the host set with `setMainBundlePath`, else the folder of
    /// the executable.
    static std::shared_ptr<NSBundle> mainBundle();
    static void setMainBundlePath(const std::string& path);
    /// The framework's bundle that `registerBundle` has registered; null for an unknown identifier.
    static std::shared_ptr<NSBundle> bundleWithIdentifier(std::string_view identifier);
    static void registerBundle(std::string identifier, const std::string& path);

    const std::string& path() const { return path_; }
    /// The path of "<name>.<type>" in this bundle; absent when there is no such file or folder, and for names
    /// that lead out of the bundle.
    std::optional<std::string> pathForResource(std::string_view name, std::string_view type) const;
    /// Opens the bundle "<name>.bundle" inside this one; null when it is missing.
    std::shared_ptr<NSBundle> bundleForResource(std::string_view name) const;
    /// The text for `key` in `table`, in the first preferred language that has the table, else in English,
    /// else in the first language by name. When the table or the key is missing: `defaultValue`, or the key
    /// itself when that is empty.
    std::string localizedString(std::string_view key, std::string_view defaultValue, std::string_view table) const;

    explicit NSBundle(std::string path);

private:
    using Table = std::map<std::string, std::string, std::less<>>;
    const Table* tableNamed(std::string_view name) const;
    std::optional<Table> readTable(std::string_view name) const;

    std::string path_;
    mutable std::mutex mutex_;  // guards tables_ and paths_
    mutable std::map<std::string, std::optional<Table>, std::less<>> tables_;
    mutable std::map<std::string, std::string, std::less<>> paths_;  // resources found so far
};

}  // namespace ostrel
