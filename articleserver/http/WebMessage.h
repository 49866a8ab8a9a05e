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

/// Fields of a query or of a form, decoded, each name at most once, all valid UTF-8.
using WebFields = std::map<std::string, std::string, std::less<>>;

/// Takes the body of a request piece by piece. What it has taken goes with it unless somebody keeps it.
class WebBodyReceiver {
public:
    virtual ~WebBodyReceiver() = default;
    /// False when no more of the body is wanted; the service then says why.
    virtual bool take(std::string_view bytes) = 0;
};

/// One request as the service sees it, apart from any HTTP library.
struct WebRequest {
    std::string method;
    std::string path;  ///< decoded; exactly one leading slash
    WebFields query;
    std::map<std::string, std::string, std::less<>> headers;  ///< names in lower case; the first of equals
    std::string body;
    std::shared_ptr<WebBodyReceiver> receiver;  ///< has taken the body in the place of `body`; else null
    std::string remoteAddress;

    /// Empty when there is no such header.
    std::string_view header(std::string_view lowerCaseName) const;
    /// Empty when there is no such cookie (RFC 6265).
    std::string_view cookie(std::string_view name) const;
};

/// A part of a file that a reply sends instead of a body.
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

/// Decodes "%41" and, in fields, "+". Refuses broken escapes, NUL and what is not UTF-8.
enum class PlusSign { isSpace, isPlus };
ServerResult<std::string> decodedPercent(std::string_view text, PlusSign plus);

/// application/x-www-form-urlencoded (URL Standard, 5.1). Refuses more than ServerLimits::fields fields, a name
/// given twice and whatever decodedPercent refuses.
ServerResult<WebFields> parseFields(std::string_view text);

/// The value of `name=` among the parameters of a header, without its quotes.
std::optional<std::string> headerParameter(std::string_view header, std::string_view name);

/// multipart/form-data (RFC 7578) held in memory. `contentType` is the header with its boundary.
ServerResult<std::vector<MultipartPart>> parseMultipart(std::string_view contentType, std::string_view body);

/// The range of a "bytes=" header for a file of `size` bytes (RFC 9110, 14.1.2).
enum class RangeKind { whole, part, unsatisfiable };
struct WebRange {
    RangeKind kind = RangeKind::whole;
    std::uint64_t offset = 0;
    std::uint64_t length = 0;
};
/// Several ranges, other units and malformed headers mean the whole file, as the standard allows.
WebRange parseRange(std::string_view header, std::uint64_t size);

/// A host name or address with an optional port, as it may stand in an address (RFC 3986, 3.2.2).
bool isHostAndPort(std::string_view text);

/// True when an If-None-Match header names the entity tag or is "*".
bool matchesEntityTag(std::string_view header, std::string_view tag);

}  // namespace articleserver
