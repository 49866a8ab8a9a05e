#pragma once

#include "articleserver/routes/ArticleService.h"

#include <nlohmann/json.hpp>

#include <string>
#include <string_view>

namespace articleserver {

/// One request while its route handles it.
struct ArticleService::RequestContext {
    const WebRequest& request;
    /// The part of the path that the route's variable matches.
    std::string variable;
    /// The cookies that the reply sets, also when it is a refusal.
    std::vector<std::string> cookies = {};
};

/// The fields of a result answer.
struct ResultAnswer {
    using Json = nlohmann::ordered_json;

    Json result = nullptr;
    Json results = Json::array();
    Json more = nullptr;
    /// An object or null in the answers of account requests; absent in all other answers.
    std::optional<Json> user = std::nullopt;
};

WebReply resultReply(const ResultAnswer& answer);
WebReply failureReply(const ServerFailure& failure);
WebReply jsonReply(int status, const nlohmann::ordered_json& body);

nlohmann::ordered_json userJson(const StoredUser& user);
/// The record of an article. `baseUrl` is the scheme and host of its addresses.
nlohmann::ordered_json articleJson(const StoredArticle& article, const std::string& baseUrl);
nlohmann::ordered_json imageJson(const StoredImage& image, const std::string& baseUrl);
nlohmann::ordered_json videoJson(const StoredVideo& video, const std::string& baseUrl);
nlohmann::ordered_json commentJson(const StoredComment& comment);

/// The HTML document of an article, with all texts escaped.
std::string articleHtml(const StoredArticle& article, const CommentPage& comments, const std::string& baseUrl);
std::string notFoundHtml();
std::string_view articleStyle();

/// The reason why a name or a password is not allowed at signing up; absent when it is allowed.
std::optional<ServerFailure> nameFault(std::string_view name);
std::optional<ServerFailure> passwordFault(std::string_view password);

/// 256 random bits as 43 characters that a cookie can hold.
std::string newToken();
/// The hash of a token. The store has only hashes.
std::string tokenHash(std::string_view token);
/// True when the text has the form of a token.
bool isToken(std::string_view text);

/// An entity tag with its quotes that follows from the bytes.
std::string entityTag(std::string_view bytes);

}  // namespace articleserver
