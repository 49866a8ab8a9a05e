#include "serverframework/media/MediumFacts.h"

#include "serverframework/http/ClientLimits.h"

#include <algorithm>
#include <charconv>
#include <curl/curl.h>
#include <map>
#include <string_view>

namespace ostrel {

namespace {

std::string_view trimmedField(std::string_view text) {
    while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.remove_suffix(1);
    return text;
}

std::string lowerCase(std::string_view text) {
    std::string result(text);
    for (char& c : result) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    }
    return result;
}

/// The directives of a Cache-Control list, with names in lower case and values without their quotes. A comma within
/// quotes does not separate directives.
std::map<std::string, std::string> directivesOf(std::string_view list) {
    std::map<std::string, std::string> directives;
    while (!list.empty()) {
        bool quoted = false;
        std::size_t end = 0;
        for (; end < list.size() && (quoted || list[end] != ','); ++end) quoted ^= list[end] == '"';
        const std::string_view item = trimmedField(list.substr(0, end));
        list.remove_prefix(std::min(end + 1, list.size()));
        const std::size_t equals = std::min(item.find('='), item.size());
        std::string_view value = trimmedField(item.substr(std::min(equals + 1, item.size())));
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
            value = value.substr(1, value.size() - 2);
        }
        directives.emplace(lowerCase(trimmedField(item.substr(0, equals))), value);
    }
    return directives;
}

/// Delta-seconds (RFC 9111, section 1.2.2). A number that is too large counts as the longest freshness.
std::optional<std::int64_t> secondsOf(std::string_view text) {
    if (text.empty() || text.find_first_not_of("0123456789") != std::string_view::npos) return std::nullopt;
    std::int64_t seconds = 0;
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return fault == std::errc::result_out_of_range ? FreshnessLimits::longest
                                                   : std::min(seconds, FreshnessLimits::longest);
}

std::optional<std::int64_t> dateOf(const std::string& text) {
    if (text.empty()) return std::nullopt;
    const std::int64_t date = curl_getdate(text.c_str(), nullptr);
    return date < 0 ? std::nullopt : std::optional(date);
}

/// The seconds for which an answer is fresh, from the moment at which the server made it.
std::int64_t lifetimeOf(const HttpAnswer& answer, const std::map<std::string, std::string>& directives,
                        std::int64_t date) {
    const auto age = directives.find("max-age");
    // A lifetime that cannot be read counts as stale (section 4.2.1).
    if (age != directives.end()) return secondsOf(age->second).value_or(0);
    if (!answer.expires.empty()) return dateOf(answer.expires).value_or(date) - date;
    const auto modified = dateOf(answer.lastModified);
    return std::clamp(modified ? (date - *modified) / 10 : 0, FreshnessLimits::shortestGuess,
                      FreshnessLimits::longestGuess);
}

}  // namespace

std::optional<MediumFacts> mediumFactsOf(const HttpAnswer& answer, std::int64_t now) {
    const auto directives = directivesOf(answer.cacheControl);
    const auto has = [&](const char* name) { return directives.find(name) != directives.end(); };
    if (has("no-store") || answer.vary.find('*') != std::string::npos) return std::nullopt;
    MediumFacts facts;
    facts.entityTag = answer.entityTag;
    facts.lastModified = answer.lastModified;
    facts.mustRevalidate = has("no-cache") || has("must-revalidate");
    if (has("no-cache")) return facts;
    const std::int64_t date = dateOf(answer.date).value_or(now);
    const std::int64_t spent = std::max({secondsOf(answer.age).value_or(0), now - date, std::int64_t{0}});
    const std::int64_t left = lifetimeOf(answer, directives, date) - spent;
    facts.freshUntil = now + std::clamp(left, std::int64_t{0}, FreshnessLimits::longest);
    return facts;
}

}  // namespace ostrel
