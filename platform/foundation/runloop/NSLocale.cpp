#include "platform/foundation/runloop/NSDate.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <langinfo.h>
#include <locale.h>  // NOLINT(modernize-deprecated-headers): newlocale is in no C++ header

namespace ostrel {

namespace {

/// "zh_CN.UTF-8@modifier" (POSIX) as "zh-CN" (BCP 47); empty for "C" and "POSIX".
std::string languageTag(std::string_view posixName) {
    std::string tag(posixName.substr(0, posixName.find_first_of(".@")));
    std::replace(tag.begin(), tag.end(), '_', '-');
    return tag == "C" || tag == "POSIX" ? std::string() : tag;
}

/// The process's environment, by the rules of POSIX; LANGUAGE, a list, by those of gettext.
class EnvironmentLocale final : public NSLocale {
public:
    EnvironmentLocale() : times_(newlocale(LC_TIME_MASK | LC_CTYPE_MASK, "", nullptr)) {
        // All texts are UTF-8; a locale of another encoding cannot be used.
        if (times_ && std::string_view(nl_langinfo_l(CODESET, times_)) != "UTF-8") {
            freelocale(times_);
            times_ = nullptr;
        }
        if (!times_) times_ = newlocale(LC_TIME_MASK, "C", nullptr);
    }
    ~EnvironmentLocale() override {
        if (times_) freelocale(times_);
    }

    std::string shortDateAndTime(NSDate date) const override {
        const double whole = std::floor(date.secondsSince1970);
        // The year of a later or earlier moment does not fit into struct tm; NaN fails the comparison too.
        if (!(std::fabs(whole) < 6e16)) return {};
        const auto seconds = static_cast<std::time_t>(whole);
        std::tm local{};
        if (!localtime_r(&seconds, &local)) return {};
        char text[128];
        const std::size_t length = strftime_l(text, sizeof text, "%x %R", &local, times_);
        return {text, length};
    }

    std::vector<std::string> preferredLanguages() const override {
        std::string names;
        for (const char* variable : {"LANGUAGE", "LC_ALL", "LC_MESSAGES", "LANG"}) {
            // NOLINTNEXTLINE(concurrency-mt-unsafe): no code of this program changes the environment
            if (const char* value = std::getenv(variable); value && *value) names.append(value).append(1, ':');
        }
        std::vector<std::string> tags;
        for (std::size_t start = 0; start < names.size();) {
            const std::size_t end = names.find(':', start);
            std::string tag = languageTag(std::string_view(names).substr(start, end - start));
            if (!tag.empty() && std::find(tags.begin(), tags.end(), tag) == tags.end()) tags.push_back(std::move(tag));
            start = end + 1;
        }
        if (tags.empty()) tags.emplace_back("en");
        return tags;
    }

private:
    locale_t times_;
};

std::shared_ptr<NSLocale>& installedLocale() {
    static std::shared_ptr<NSLocale> locale = std::make_shared<EnvironmentLocale>();
    return locale;
}

}  // namespace

NSLocale& NSLocale::current() { return *installedLocale(); }

void NSLocale::install(std::shared_ptr<NSLocale> locale) {
    installedLocale() = locale ? std::move(locale) : std::make_shared<EnvironmentLocale>();
}

}  // namespace ostrel
