#pragma once

#include "articleserver/common/ServerResult.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace articleserver {

/// The decoded fields of a query or a form. Each name occurs once, and names and values are valid UTF-8.
using WebFields = std::map<std::string, std::string, std::less<>>;

/// Receives the body of a request in pieces. Its destructor drops the received data that the service did not
/// keep.
class WebBodyReceiver {
public:
    virtual ~WebBodyReceiver() = default;
    /// False when the receiver refuses the rest of the body; the reply of the service then tells the reason.
    virtual bool take(std::string_view bytes) = 0;
};

/// One request as the service sees it. It does not depend on the HTTP library.
struct WebRequest {
    std::string method;
    /// Decoded, with exactly one leading slash.
    std::string path;
    WebFields query;
    /// By name in lower case. Of several headers with one name, the first.
    std::map<std::string, std::string, std::less<>> headers;
    std::string body;
    /// The receiver that has taken the body, which `body` then does not hold; null when `body` holds it.
    std::shared_ptr<WebBodyReceiver> receiver;
    std::string remoteAddress;

    /// The value of a header; empty when the request has no such header.
    std::string_view header(std::string_view lowerCaseName) const;
    /// The value of a cookie (RFC 6265); empty when the request has no such cookie.
    std::string_view cookie(std::string_view name) const;
};

/// The part of a file that a reply sends instead of a body.
struct WebFile {
    std::string path;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};

struct WebReply {
    int status = 200;
    std::string contentType;
    std::string body;
    std::optional<WebFile> file;
    std::vector<std::pair<std::string, std::string>> headers;
};

struct MultipartPart {
    std::string name;
    std::string content;
};

/// The HTTP status of a refusal.
int httpStatus(ServerFault fault);

/// What "+" stands for: a space in fields, itself in paths.
enum class PlusSign { isSpace, isPlus };
/// Decodes percent escapes such as "%41". Refuses broken escapes, NUL and bytes that are not UTF-8.
ServerResult<std::string> decodedPercent(std::string_view text, PlusSign plus);

/// Parses application/x-www-form-urlencoded (URL Standard, 5.1). Refuses more than ServerLimits::fields
/// fields, a second field with the same name, and all that decodedPercent refuses.
ServerResult<WebFields> parseFields(std::string_view text);

/// The value of the parameter `name` of a header, without quotes; absent when the header has no such
/// parameter.
std::optional<std::string> headerParameter(std::string_view header, std::string_view name);

/// Parses multipart/form-data (RFC 7578) in memory. `contentType` is the header with the boundary.
ServerResult<std::vector<MultipartPart>> parseMultipart(std::string_view contentType, std::string_view body);

enum class RangeKind { whole, part, unsatisfiable };
struct WebRange {
    RangeKind kind = RangeKind::whole;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};
/// The range that a Range header asks for, of a file of `size` bytes (RFC 9110, 14.1.2). For several ranges,
/// other units and malformed headers it is the whole file, which RFC 9110, 14.2, allows.
WebRange parseRange(std::string_view header, std::uint64_t size);

/// True for a host name or an IP address with an optional port, as a URL contains it (RFC 3986, 3.2.2).
bool isHostAndPort(std::string_view text);

/// True when an If-None-Match header names the entity tag or is "*".
bool matchesEntityTag(std::string_view header, std::string_view tag);

}  // namespace articleserver
