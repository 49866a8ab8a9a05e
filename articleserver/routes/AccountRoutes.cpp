#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/routes/ArticleServiceParts.h"

#include <algorithm>

namespace articleserver {

namespace {

constexpr std::string_view sessionCookie = "ostrel_session";

struct Credentials {
    std::string name;
    std::string password;
};

/// The name, without white space around it, and the password of the form; `badInput` when either is missing.
ServerResult<Credentials> credentialsOf(const WebRequest& request) {
    auto form = parseFields(request.body);
    if (!form) return form.failure();
    auto name = form->find("name");
    auto password = form->find("password");
    if (name == form->end() || password == form->end()) {
        return ServerFailure{ServerFault::badInput, "Enter a name and a password."};
    }
    return Credentials{trimmedText(name->second), password->second};
}

ServerFailure refused(std::string text) { return {ServerFault::badInput, std::move(text)}; }

std::optional<ServerFailure> faultOf(const Credentials& credentials) {
    auto fault = nameFault(credentials.name);
    return fault ? fault : passwordFault(credentials.password);
}

ServerFailure tooManyAttempts() { return {ServerFault::throttled, "Too many attempts. Try again in a few minutes."}; }

/// The reply to a refused account request. All answers of account requests have a user, here null.
WebReply accountFailure(const ServerFailure& failure) {
    WebReply reply = failureReply(failure);
    auto body = nlohmann::ordered_json::parse(reply.body);
    body["user"] = nullptr;
    reply.body = body.dump();
    return reply;
}

}  // namespace

std::optional<ServerFailure> nameFault(std::string_view name) {
    if (name.empty()) return refused("The name is empty.");
    if (characterCount(name) > ServerLimits::nameCharacters) {
        return refused("The name is longer than 40 characters.");
    }
    if (!isShowableName(name)) return refused("The name has characters that cannot be shown.");
    return std::nullopt;
}

std::optional<ServerFailure> passwordFault(std::string_view password) {
    std::size_t length = characterCount(password);
    if (length < ServerLimits::passwordCharactersLeast) {
        return refused("The password is shorter than 8 characters.");
    }
    if (length > ServerLimits::passwordCharacters) {
        return refused("The password is longer than 256 characters.");
    }
    return std::nullopt;
}

nlohmann::ordered_json userJson(const StoredUser& user) { return {{"id", user.id}, {"name", user.name}}; }

WebReply ArticleService::startSession(RequestContext& context, const StoredUser& user) {
    // The old session of the browser ends here, since a browser cannot use two sessions and would leave one
    // open.
    std::string_view old = context.request.cookie(sessionCookie);
    if (isToken(old)) {
        auto removed = store_.removeSession(tokenHash(old));
        if (!removed) return accountFailure(removed.failure());
    }
    ServerTime now = now_();
    auto seconds = std::chrono::duration_cast<std::chrono::seconds>(ServerLimits::sessionLife).count();
    std::string token = newToken();
    auto added = store_.addSession(user.id, tokenHash(token), now + seconds * 1000, now);
    if (!added) return accountFailure(added.failure());
    context.cookies.push_back(cookie(sessionCookie, token, seconds));
    ResultAnswer answer;
    answer.user = userJson(user);
    return resultReply(answer);
}

WebReply ArticleService::signUp(RequestContext& context) {
    auto credentials = credentialsOf(context.request);
    if (!credentials) return accountFailure(credentials.failure());
    if (auto fault = faultOf(*credentials)) return accountFailure(*fault);
    if (!signUps_.take(context.request.remoteAddress, now_())) return accountFailure(tooManyAttempts());

    // This check saves the slow hashing of a password for a taken name. The store checks the name again.
    auto taken = store_.userNamed(credentials->name);
    if (!taken) return accountFailure(taken.failure());
    if (*taken) return accountFailure({ServerFault::conflict, "The name is taken."});
    auto hash = hasher_.hash(credentials->password);
    if (!hash) return accountFailure(hash.failure());
    StoredUser user{0, credentials->name, *hash, ""};
    auto id = store_.addUser(user, now_());
    if (!id) return accountFailure(id.failure());
    user.id = *id;
    return startSession(context, user);
}

WebReply ArticleService::signIn(RequestContext& context) {
    auto credentials = credentialsOf(context.request);
    if (!credentials) return accountFailure(credentials.failure());
    const ServerFailure wrong{ServerFault::signedOut, "The name or the password is wrong."};
    // No account can have such a name or password, so the slow hashing is not needed.
    if (faultOf(*credentials)) return accountFailure(wrong);

    // The attempt counts before the password is checked, so that parallel attempts cannot exceed the limit.
    const std::string& address = context.request.remoteAddress;
    const std::string nameAndAddress = address + " " + nameKey(credentials->name);
    ServerTime now = now_();
    if (!signInsByName_.take(nameAndAddress, now)) return accountFailure(tooManyAttempts());
    if (!signInsByAddress_.take(address, now)) {
        signInsByName_.giveBack(nameAndAddress);
        return accountFailure(tooManyAttempts());
    }
    auto forgive = [&] {
        signInsByName_.giveBack(nameAndAddress);
        signInsByAddress_.giveBack(address);
    };
    auto user = store_.userNamed(credentials->name);
    auto matches = user ? hasher_.matches(*user ? (*user)->passwordHash : "", credentials->password)
                        : ServerResult<bool>(user.failure());
    if (!matches) {
        forgive();
        return accountFailure(matches.failure());
    }
    if (!*matches) return accountFailure(wrong);
    forgive();
    return startSession(context, **user);
}

WebReply ArticleService::signOut(RequestContext& context) {
    std::string_view token = context.request.cookie(sessionCookie);
    if (isToken(token)) {
        auto removed = store_.removeSession(tokenHash(token));
        if (!removed) return accountFailure(removed.failure());
    }
    context.cookies.push_back(cookie(sessionCookie, "", 0));
    ResultAnswer answer;
    answer.user = nullptr;
    return resultReply(answer);
}

WebReply ArticleService::currentUser(RequestContext& context) {
    auto user = signedIn(context);
    if (!user) return accountFailure(user.failure());
    ResultAnswer answer;
    answer.user = *user ? userJson(**user) : nlohmann::ordered_json(nullptr);
    return resultReply(answer);
}

WebReply ArticleService::uploadAvatar(RequestContext& context) {
    auto user = signedIn(context);
    if (!user) return accountFailure(user.failure());
    if (!*user) return accountFailure({ServerFault::signedOut, "Sign in first."});
    auto parts = parseMultipart(context.request.header("content-type"), context.request.body);
    if (!parts) return accountFailure(parts.failure());
    auto part = std::find_if(parts->begin(), parts->end(),
                             [](const MultipartPart& candidate) { return candidate.name == "image.jpg"; });
    if (part == parts->end()) {
        return accountFailure({ServerFault::badInput, "The picture \"image.jpg\" is missing."});
    }
    if (part->content.size() > ServerLimits::avatarFile) {
        return accountFailure({ServerFault::tooLarge, "The picture is larger than 5 MiB."});
    }
    auto name = ingest_.addAvatar(part->content);
    if (!name) return accountFailure(name.failure());
    auto replaced = store_.setAvatar((*user)->id, *name);
    if (!replaced) {
        media_.remove({*name});
        return accountFailure(replaced.failure());
    }
    media_.remove({*replaced});
    ResultAnswer answer;
    answer.user = userJson(**user);
    return resultReply(answer);
}

}  // namespace articleserver
