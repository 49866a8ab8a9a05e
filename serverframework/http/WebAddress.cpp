#include "serverframework/http/WebAddress.h"

#include <algorithm>
#include <curl/curl.h>
#include <memory>

namespace ostrel {

namespace {

struct UrlFree {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
using Url = std::unique_ptr<CURLU, UrlFree>;

std::optional<std::string> partOf(CURLU* url, CURLUPart part, unsigned int flags = 0) {
    char* text = nullptr;
    if (curl_url_get(url, part, &text, flags) != CURLUE_OK) return std::nullopt;
    std::string result(text);
    curl_free(text);
    return result;
}

Url parsed(const std::string& address) {
    Url url(curl_url());
    if (!url || hasControlCharacters(address) ||
        curl_url_set(url.get(), CURLUPART_URL, address.c_str(), 0) != CURLUE_OK) {
        return nullptr;
    }
    return url;
}

std::string lowered(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : static_cast<char>(c);
    });
    return text;
}

struct Origin {
    std::string text;
    std::string host;
};

std::optional<Origin> originOf(CURLU* url) {
    const auto scheme = partOf(url, CURLUPART_SCHEME);
    const auto host = partOf(url, CURLUPART_HOST);
    const auto port = partOf(url, CURLUPART_PORT, CURLU_DEFAULT_PORT);
    if (!scheme || !host || host->empty() || !port || (*scheme != "http" && *scheme != "https")) return std::nullopt;
    if (partOf(url, CURLUPART_USER) || partOf(url, CURLUPART_PASSWORD)) return std::nullopt;
    const std::string name = lowered(*host);
    return Origin{*scheme + "://" + name + ":" + *port, name};
}

bool isUnreserved(unsigned char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '.' ||
           c == '_' || c == '~';
}

void appendEncoded(std::string& to, unsigned char c) {
    static constexpr char digits[] = "0123456789ABCDEF";
    to += '%';
    to += digits[c >> 4];
    to += digits[c & 15];
}

void setError(std::string* error, const char* sentence) {
    if (error) *error = sentence;
}

}  // namespace

std::optional<BaseAddress> BaseAddress::parse(const std::string& text, std::string* error) {
    const Url url = parsed(text);
    const auto origin = url ? originOf(url.get()) : std::nullopt;
    if (!origin) {
        setError(error, "The server's address must be an http or https address, such as \"https://example.org\".");
        return std::nullopt;
    }
    if (partOf(url.get(), CURLUPART_QUERY) || partOf(url.get(), CURLUPART_FRAGMENT)) {
        setError(error, "The server's address must not have a query or a fragment.");
        return std::nullopt;
    }
    BaseAddress result;
    result.origin_ = origin->text;
    result.host_ = origin->host;
    result.prefix_ = partOf(url.get(), CURLUPART_PATH).value_or("");
    while (!result.prefix_.empty() && result.prefix_.back() == '/') result.prefix_.pop_back();
    return result;
}

std::optional<std::string> BaseAddress::join(std::string_view path, std::string* error) const {
    if (hasControlCharacters(path)) {
        setError(error, "The path has control characters.");
        return std::nullopt;
    }
    if (leavesServer(path)) {
        setError(error, "The path is not relative to the server's address.");
        return std::nullopt;
    }
    if (!path.empty() && path.front() == '/') path.remove_prefix(1);
    std::string result = origin_ + prefix_ + "/";
    result.reserve(result.size() + path.size());
    for (const char c : path) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte <= 0x20 || byte >= 0x7f) {
            appendEncoded(result, byte);
        } else {
            result += c;
        }
    }
    return result;
}

std::optional<std::string> originOfAddress(const std::string& address) {
    // libcurl's parser completes an address such as "http:/host"; only an address that is written out counts here.
    if (address.find("://") == std::string::npos) return std::nullopt;
    const Url url = parsed(address);
    const auto origin = url ? originOf(url.get()) : std::nullopt;
    if (!origin) return std::nullopt;
    return origin->text;
}

bool leavesServer(std::string_view reference) {
    if (reference.substr(0, 2) == "//") return true;
    const std::size_t end = reference.find_first_of(":/?#");
    if (end == std::string_view::npos || end == 0 || reference[end] != ':') return false;
    // RFC 3986, section 3.1: a scheme begins with a letter and holds letters, digits, "+", "-" and ".".
    const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    if (!isLetter(reference.front())) return false;
    return std::all_of(reference.begin(), reference.begin() + static_cast<std::ptrdiff_t>(end), [&](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
}

bool hasControlCharacters(std::string_view text) {
    return std::any_of(text.begin(), text.end(), [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return byte < 0x20 || byte == 0x7f;
    });
}

bool isLoopbackHost(std::string_view host) {
    return host == "localhost" || host == "[::1]" || host.substr(0, 4) == "127.";
}

std::string percentEncoded(std::string_view text) {
    std::string result;
    result.reserve(text.size() * 3);
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (isUnreserved(byte)) {
            result += c;
        } else {
            appendEncoded(result, byte);
        }
    }
    return result;
}

}  // namespace ostrel
