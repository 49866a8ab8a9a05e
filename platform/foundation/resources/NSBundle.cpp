#include "platform/foundation/resources/NSBundle.h"

#include "platform/foundation/resources/StringsFile.h"
#include "platform/foundation/runloop/NSDate.h"
#include "platform/foundation/runloop/NSLog.h"
#include "platform/foundation/values/Data.h"

#include <algorithm>
#include <filesystem>
#include <vector>

namespace ostrel {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t maximumKeptPaths = 1024;

struct Registry {
    std::mutex mutex;  // guards both
    std::shared_ptr<NSBundle> mainBundle;
    std::map<std::string, std::shared_ptr<NSBundle>, std::less<>> byIdentifier;
};

Registry& registry() {
    static Registry registry;
    return registry;
}

bool isFolder(const fs::path& path) {
    std::error_code failure;
    return fs::is_directory(path, failure);
}

std::string folderOfExecutable() {
    std::error_code failure;
    const fs::path executable = fs::read_symlink("/proc/self/exe", failure);
    return failure ? std::string(".") : executable.parent_path().string();
}

/// Whether a relative path in normal form stays below its starting folder.
bool staysInside(const fs::path& relative) {
    return !relative.is_absolute() && relative != "." && *relative.begin() != "..";
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& c : lower) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c == '_') c = '-';
    }
    return lower;
}

/// The script that a Chinese tag without a script subtag implies: by its region, else simplified (likely
/// subtags of CLDR).
std::string chineseWithScript(const std::string& tag) {
    for (const std::string_view region : {"-tw", "-hk", "-mo"}) {
        if (tag.ends_with(region)) return "zh-hant";
    }
    return "zh-hans";
}

/// The possible names of a language's folder, best first: the tag, its prefixes, and for Chinese the tag of
/// the script.
std::vector<std::string> folderNames(std::string_view preferred) {
    std::vector<std::string> names;
    std::string tag = lowerCase(preferred);
    const bool isChinese = tag == "zh" || tag.starts_with("zh-");
    const bool namesScript = tag.find("-hans") != std::string::npos || tag.find("-hant") != std::string::npos;
    names.push_back(tag);
    if (isChinese && !namesScript) names.push_back(chineseWithScript(tag));
    for (std::size_t end; (end = tag.rfind('-')) != std::string::npos;) {
        tag.resize(end);
        names.push_back(tag);
    }
    return names;
}

/// The paths of a table in the language folders of a bundle, by the folder's name in lower case.
std::map<std::string, std::string> languagesOfTable(const fs::path& bundle, const std::string& table) {
    std::map<std::string, std::string> languages;
    std::error_code failure;
    for (fs::directory_iterator entry(bundle, failure), end; !failure && entry != end; entry.increment(failure)) {
        const fs::path file = entry->path() / table;
        std::error_code missing;
        if (entry->path().extension() != ".lproj" || !fs::is_regular_file(file, missing)) continue;
        languages.emplace(lowerCase(entry->path().stem().string()), file.string());
    }
    return languages;
}

}  // namespace

NSBundle::NSBundle(std::string path) : path_(std::move(path)) {}

std::shared_ptr<NSBundle> NSBundle::bundleWithPath(const std::string& path) {
    return isFolder(path) ? std::make_shared<NSBundle>(path) : nullptr;
}

std::shared_ptr<NSBundle> NSBundle::mainBundle() {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    if (!all.mainBundle) all.mainBundle = std::make_shared<NSBundle>(folderOfExecutable());
    return all.mainBundle;
}

void NSBundle::setMainBundlePath(const std::string& path) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    all.mainBundle = path.empty() ? nullptr : std::make_shared<NSBundle>(path);
}

std::shared_ptr<NSBundle> NSBundle::bundleWithIdentifier(std::string_view identifier) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    const auto found = all.byIdentifier.find(identifier);
    return found != all.byIdentifier.end() && isFolder(found->second->path()) ? found->second : nullptr;
}

void NSBundle::registerBundle(std::string identifier, const std::string& path) {
    Registry& all = registry();
    const std::lock_guard lock(all.mutex);
    all.byIdentifier.insert_or_assign(std::move(identifier), std::make_shared<NSBundle>(path));
}

std::optional<std::string> NSBundle::pathForResource(std::string_view name, std::string_view type) const {
    std::string file(name);
    if (!type.empty()) file.append(1, '.').append(type);
    if (name.empty() || file.find('\0') != std::string::npos) return std::nullopt;
    {
        const std::lock_guard lock(mutex_);
        if (const auto found = paths_.find(file); found != paths_.end()) return found->second;
    }
    const fs::path relative = fs::path(file).lexically_normal();
    if (!staysInside(relative)) return std::nullopt;
    const fs::path path = fs::path(path_) / relative;
    std::error_code failure;
    if (!fs::exists(path, failure)) return std::nullopt;
    // Cached, because every row asks for the same few pictures.
    const std::lock_guard lock(mutex_);
    if (paths_.size() >= maximumKeptPaths) paths_.clear();
    return paths_.insert_or_assign(std::move(file), path.string()).first->second;
}

std::shared_ptr<NSBundle> NSBundle::bundleForResource(std::string_view name) const {
    const auto path = pathForResource(name, "bundle");
    return path ? bundleWithPath(*path) : nullptr;
}

std::string NSBundle::localizedString(std::string_view key, std::string_view defaultValue,
                                      std::string_view table) const {
    if (const Table* texts = tableNamed(table)) {
        if (const auto found = texts->find(key); found != texts->end()) return found->second;
    }
    return std::string(defaultValue.empty() ? key : defaultValue);
}

const NSBundle::Table* NSBundle::tableNamed(std::string_view name) const {
    const std::lock_guard lock(mutex_);
    auto entry = tables_.find(name);
    if (entry == tables_.end()) entry = tables_.emplace(name, readTable(name)).first;
    return entry->second ? &*entry->second : nullptr;
}

std::optional<NSBundle::Table> NSBundle::readTable(std::string_view name) const {
    const std::string file = std::string(name) + ".strings";
    if (name.empty() || file.find_first_of(std::string_view("/\0", 2)) != std::string::npos) return std::nullopt;
    const auto languages = languagesOfTable(path_, file);
    if (languages.empty()) return std::nullopt;

    std::vector<std::string> wanted;
    for (const std::string& preferred : NSLocale::current().preferredLanguages()) {
        for (std::string& folder : folderNames(preferred)) wanted.push_back(std::move(folder));
    }
    wanted.emplace_back("en");
    const auto isThere = [&](const std::string& language) { return languages.contains(language); };
    const auto best = std::find_if(wanted.begin(), wanted.end(), isThere);
    const std::string& path = best != wanted.end() ? languages.at(*best) : languages.begin()->second;

    std::string error;
    const Data data = Data::mapFile(path, &error);
    if (!data) {
        NSLog("%@", error);
        return std::nullopt;
    }
    detail::StringsFile parsed = detail::parseStringsFile(data.view());
    if (!parsed.error.empty()) NSLog("The string table \"%@\" is used only in part: %@", path, parsed.error);
    return std::move(parsed.texts);
}

}  // namespace ostrel
