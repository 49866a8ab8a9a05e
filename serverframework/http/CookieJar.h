#pragma once

#include <array>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ostrel {

/// The cookies of one server (RFC 6265), kept by libcurl and shared by the requests that are made with this jar. A
/// request keeps its jar until the request has ended, and signing out makes a new jar: an answer that arrives after a
/// sign-out therefore cannot bring the old session back. Any thread.
class CookieJar final {
public:
    /// `origin`: "http://host:port" of the only server whose cookies `add` accepts.
    explicit CookieJar(std::string origin);
    ~CookieJar();
    CookieJar(const CookieJar&) = delete;
    CookieJar& operator=(const CookieJar&) = delete;

    /// The cookies as a text for a store: a line with the origin, then one line for each cookie in the format of
    /// Netscape's cookie file. Empty when there are no cookies.
    std::string text() const;
    /// Adds the cookies of a text that `text()` returned. Leaves out a text of another origin, cookies of another host
    /// and malformed lines.
    void add(std::string_view text);
    bool has(std::string_view name) const;
    /// A new jar with all cookies except the one with this name.
    std::shared_ptr<CookieJar> without(std::string_view name) const;

    /// The CURLSH that a request sets as CURLOPT_SHARE.
    void* shareHandle() const { return share_; }

private:
    std::vector<std::string> lines() const;
    void addLine(const std::string& line);

    std::string origin_;
    void* share_;
    /// One for each kind of data that libcurl locks.
    mutable std::array<std::mutex, 16> locks_;
};

/// The text of a jar without the times at which its cookies expire. A store need not be written again for these alone.
std::string withoutExpiry(std::string_view text);

}  // namespace ostrel
