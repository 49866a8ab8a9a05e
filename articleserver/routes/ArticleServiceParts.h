#pragma once

#include "articleserver/routes/ArticleService.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace articleserver {

/// One request on its way through a route.
struct ArticleService::Visit {
    const WebRequest& request;
    std::string variable;  ///< what the path holds in the place of the route's variable part
    /// Cookies to set whatever the answer is.
    std::vector<std::string> cookies = {};
};

/// The fields of a result answer.
struct ResultAnswer {
    using Json = nlohmann::ordered_json;

    Json result = nullptr;
    Json results = Json::array();
    Json more = nullptr;
    /// Present in the answers of accounts only: an object or null.
    std::optional<Json> user = std::nullopt;
};

WebReply resultReply(const ResultAnswer& answer);
WebReply failureReply(const ServerFailure& failure);
WebReply jsonReply(int status, const nlohmann::ordered_json& body);

nlohmann::ordered_json userJson(const StoredUser& user);
/// The article record; `baseUrl` goes in front of its addresses.
nlohmann::ordered_json articleJson(const StoredArticle& article, const std::string& baseUrl);
nlohmann::ordered_json imageJson(const StoredImage& image, const std::string& baseUrl);
nlohmann::ordered_json videoJson(const StoredVideo& video, const std::string& baseUrl);
nlohmann::ordered_json commentJson(const StoredComment& comment);

/// The whole HTML document of an article, everything escaped.
std::string articleHtml(const StoredArticle& article, const CommentPage& comments,
                        const std::string& baseUrl);
std::string notFoundHtml();
std::string_view articleStyle();

/// Why nobody can sign up with this name or password; absent when somebody can.
std::optional<ServerFailure> nameFault(std::string_view name);
std::optional<ServerFailure> passwordFault(std::string_view password);

/// 256 random bits as 43 characters fit for a cookie, and what the store keeps of them.
std::string newToken();
std::string tokenHash(std::string_view token);
bool isToken(std::string_view text);

/// A quoted entity tag of the bytes.
std::string entityTag(std::string_view bytes);

}  // namespace articleserver
