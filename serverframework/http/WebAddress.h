#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ostrel {

/// The address that the paths of a server's requests are relative to: "https://host[:port][/prefix][/]" (RFC 3986).
class BaseAddress final {
public:
    /// Absent, with a sentence in `error`, unless `text` is an http or https address with a host and without user
    /// information, query and fragment.
    static std::optional<BaseAddress> parse(const std::string& text, std::string* error);

    /// The absolute address of a relative path, which may begin with one "/" and carry a query. The path is not
    /// changed, except that bytes which no address may hold (blanks, non-ASCII) are percent-encoded. Absent, with a
    /// sentence in `error`, for an absolute address and for a path with control characters.
    std::optional<std::string> join(std::string_view path, std::string* error) const;

    /// Scheme, host and port, "http://127.0.0.1:8080"; with the port even when it is the scheme's default.
    const std::string& origin() const { return origin_; }
    /// The host in lower case, IPv6 in brackets.
    const std::string& host() const { return host_; }

private:
    std::string origin_;
    std::string host_;
    /// The path of the base address without a slash at its end.
    std::string prefix_;
};

/// The origin of an absolute http or https address as `BaseAddress::origin` writes it. Absent for any other text and
/// for an address with user information.
std::optional<std::string> originOfAddress(const std::string& address);

/// True when `reference` names its own scheme ("http://…", "mailto:…") or host ("//…"), so that it is not a path.
bool leavesServer(std::string_view reference);

bool hasControlCharacters(std::string_view text);

/// True for "localhost" and for the loopback addresses of IPv4 and IPv6; IPv6 is written in brackets, as in an address.
bool isLoopbackHost(std::string_view host);

/// Percent-encoding (RFC 3986, section 2.1): unreserved characters stay, every other byte becomes "%XX". A blank
/// becomes "%20", which decoders of queries and of forms read alike.
std::string percentEncoded(std::string_view text);

}  // namespace ostrel
