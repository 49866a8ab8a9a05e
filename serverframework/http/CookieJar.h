#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The cookies of one server (RFC 6265, kept by libcurl), shared by the requests that are made with it. A request keeps
/// its jar until it has ended, so that an answer that is late by a sign-out cannot bring the old session back: signing
/// out makes a new jar. Any thread.
class CookieJar final {
public:
    /// `origin`: the only server whose cookies are taken from a kept text; "http://host:port".
    explicit CookieJar(std::string origin);
    ~CookieJar();
    CookieJar(const CookieJar&) = delete;
    CookieJar& operator=(const CookieJar&) = delete;

    /// The cookies as text to be kept: the origin, then a line a cookie in the format of Netscape's cookie file. Empty
    /// when there are none.
    std::string text() const;
    /// Adds the cookies of a text that `text()` gave. Lines of another origin, of another host and malformed ones are
    /// left out.
    void add(std::string_view text);
    bool has(std::string_view name) const;
    /// A new jar with all cookies but the one named.
    std::shared_ptr<CookieJar> without(std::string_view name) const;

    /// The CURLSH to be set as CURLOPT_SHARE.
    void* shareHandle() const { return share_; }

private:
    std::vector<std::string> lines() const;
    void addLine(const std::string& line);

    std::string origin_;
    void* share_;
    /// One for each kind of data libcurl locks.
    mutable std::array<std::mutex, 16> locks_;
};

/// `text` of a jar without the moments at which its cookies expire: what decides whether it is worth keeping anew.
std::string withoutExpiry(std::string_view text);

}  // namespace ostrel
