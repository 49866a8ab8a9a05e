#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The address all requests of a server are relative to: "https://host[:port][/prefix][/]" (RFC 3986).
class BaseAddress final {
public:
    /// None, and a sentence in `error`, unless `text` is an http or https address with a host and without user
    /// information, query and fragment.
    static std::optional<BaseAddress> parse(const std::string& text, std::string* error);

    /// The absolute address of a relative path, which may begin with one "/" and carry a query. The path stands as it
    /// is, except that bytes which no address may hold (blanks, non-ASCII) are percent-encoded. None, and a sentence in
    /// `error`, for absolute addresses and for control characters.
    std::optional<std::string> join(std::string_view path, std::string* error) const;

    /// Scheme, host and port: "http://127.0.0.1:8080". The port is always there.
    const std::string& origin() const { return origin_; }
    /// The host in lower case, IPv6 in brackets.
    const std::string& host() const { return host_; }

private:
    std::string origin_;
    std::string host_;
    /// Without a slash at its end.
    std::string prefix_;
};

/// The origin of an absolute http or https address as `BaseAddress::origin` writes it; none for anything else and for
/// addresses that carry user information.
std::optional<std::string> originOfAddress(const std::string& address);

/// True when `reference` names its own scheme ("http://…", "mailto:…") or host ("//…"), so that it is not a path.
bool leavesServer(std::string_view reference);

bool hasControlCharacters(std::string_view text);

/// True for "localhost" and the loopback networks of IPv4 and IPv6 (as an address has them, IPv6 in brackets).
bool isLoopbackHost(std::string_view host);

/// Percent-encoding (RFC 3986, section 2.1): unreserved characters stay, every other byte becomes "%XX". A blank
/// becomes "%20", so that query and form decoders agree on it.
std::string percentEncoded(std::string_view text);

}  // namespace ostrel
