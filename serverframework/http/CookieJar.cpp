#include "serverframework/http/CookieJar.h"

#include "serverframework/http/WebAddress.h"

#include <cassert>
#include <curl/curl.h>
#include <utility>

namespace ostrel {

namespace {

struct EasyFree {
    void operator()(CURL* handle) const { curl_easy_cleanup(handle); }
};

constexpr std::size_t fieldCount = 7;
constexpr std::size_t domainField = 0;
constexpr std::size_t expiryField = 4;
constexpr std::size_t nameField = 5;
constexpr std::string_view httpOnlyMark = "#HttpOnly_";

std::vector<std::string_view> split(std::string_view text, char separator) {
    std::vector<std::string_view> parts;
    while (true) {
        const std::size_t end = text.find(separator);
        parts.push_back(text.substr(0, end));
        if (end == std::string_view::npos) return parts;
        text.remove_prefix(end + 1);
    }
}

std::string_view nameOf(std::string_view line) {
    const auto fields = split(line, '\t');
    return fields.size() == fieldCount ? fields[nameField] : std::string_view();
}

}  // namespace

CookieJar::CookieJar(std::string origin) : origin_(std::move(origin)), share_(curl_share_init()) {
    static_assert(CURL_LOCK_DATA_LAST <= 16);
    assert(share_);
    curl_share_setopt(static_cast<CURLSH*>(share_), CURLSHOPT_USERDATA, this);
    const curl_lock_function lock = [](CURL*, curl_lock_data data, curl_lock_access, void* jar) {
        static_cast<CookieJar*>(jar)->locks_[data].lock();
    };
    const curl_unlock_function unlock = [](CURL*, curl_lock_data data, void* jar) {
        static_cast<CookieJar*>(jar)->locks_[data].unlock();
    };
    curl_share_setopt(static_cast<CURLSH*>(share_), CURLSHOPT_LOCKFUNC, lock);
    curl_share_setopt(static_cast<CURLSH*>(share_), CURLSHOPT_UNLOCKFUNC, unlock);
    curl_share_setopt(static_cast<CURLSH*>(share_), CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
}

CookieJar::~CookieJar() {
    [[maybe_unused]] const CURLSHcode result = curl_share_cleanup(static_cast<CURLSH*>(share_));
    assert(result == CURLSHE_OK);
}

std::vector<std::string> CookieJar::lines() const {
    std::vector<std::string> result;
    const std::unique_ptr<CURL, EasyFree> handle(curl_easy_init());
    if (!handle) return result;
    curl_easy_setopt(handle.get(), CURLOPT_SHARE, static_cast<CURLSH*>(share_));
    curl_slist* list = nullptr;
    if (curl_easy_getinfo(handle.get(), CURLINFO_COOKIELIST, &list) == CURLE_OK) {
        for (const curl_slist* item = list; item; item = item->next) result.emplace_back(item->data);
    }
    curl_slist_free_all(list);
    return result;
}

std::string CookieJar::text() const {
    std::string result;
    for (const std::string& line : lines()) {
        if (result.empty()) result = origin_;
        result += '\n';
        result += line;
    }
    return result;
}

void CookieJar::addLine(const std::string& line) {
    const std::unique_ptr<CURL, EasyFree> handle(curl_easy_init());
    if (!handle) return;
    curl_easy_setopt(handle.get(), CURLOPT_SHARE, static_cast<CURLSH*>(share_));
    curl_easy_setopt(handle.get(), CURLOPT_COOKIEFILE, "");
    curl_easy_setopt(handle.get(), CURLOPT_COOKIELIST, line.c_str());
}

void CookieJar::add(std::string_view text) {
    const auto lines = split(text, '\n');
    if (lines.front() != origin_) return;
    // In "http://[::1]:80" the host stands between the slashes and the last colon; cookies have it without the
    // brackets.
    std::string_view host = std::string_view(origin_).substr(origin_.find("://") + 3);
    host = host.substr(0, host.rfind(':'));
    if (host.front() == '[') host = host.substr(1, host.size() - 2);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const auto fields = split(lines[i], '\t');
        if (fields.size() != fieldCount) continue;
        std::string_view domain = fields[domainField];
        if (domain.substr(0, httpOnlyMark.size()) == httpOnlyMark) domain.remove_prefix(httpOnlyMark.size());
        if (domain == host) addLine(std::string(lines[i]));
    }
}

bool CookieJar::has(std::string_view name) const {
    for (const std::string& line : lines()) {
        if (nameOf(line) == name) return true;
    }
    return false;
}

std::shared_ptr<CookieJar> CookieJar::without(std::string_view name) const {
    auto jar = std::make_shared<CookieJar>(origin_);
    for (const std::string& line : lines()) {
        if (nameOf(line) != name) jar->addLine(line);
    }
    return jar;
}

std::string withoutExpiry(std::string_view text) {
    std::string result;
    for (const std::string_view line : split(text, '\n')) {
        const auto fields = split(line, '\t');
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (i != expiryField) result.append(fields[i]).append("\t");
        }
        result += '\n';
    }
    return result;
}

}  // namespace ostrel
