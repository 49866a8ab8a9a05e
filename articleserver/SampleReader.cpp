#include "articleserver/SampleReader.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/ArticleServiceParts.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <initializer_list>
#include <string_view>

namespace articleserver {

namespace {

using Json = nlohmann::json;

constexpr ServerTime minute = 60'000;
/// A hundred years in minutes.
constexpr std::int64_t longestAge = 100 * 366 * 24 * 60;
constexpr std::int64_t mostLikes = 100'000;

std::string inQuotes(std::string_view text) { return "\"" + std::string(text) + "\""; }

ServerFailure wrong(const std::filesystem::path& file, const std::string& how) {
    return {ServerFault::badInput, "The sample file " + file.string() + " is " + how + "."};
}

/// Reads samples.json. After the first fault it reads on without effect; read() reports only the first fault.
class ContentReader final {
public:
    ContentReader(std::filesystem::path file, ServerTime now) : file_(std::move(file)), now_(now) {}

    ServerResult<SampleContent> read() {
        std::ifstream stream(file_, std::ios::binary);
        if (!stream) return unreadableSample(file_);
        const Json root = Json::parse(stream, nullptr, false);
        if (root.is_discarded()) return wrong(file_, "not JSON");
        SampleContent content;
        where_ = "the file";
        check(root, {"people", "articles", "messages"});
        each(root, "people", "person", [&](const Json& person) { content.people.push_back(personOf(person)); });
        for (const SamplePerson& person : content.people) names_.push_back(person.name);
        each(root, "articles", "article", [&](const Json& article) { content.articles.push_back(articleOf(article)); });
        each(root, "messages", "message",
             [&](const Json& message) { content.notifications.push_back(messageOf(message)); });
        if (content.people.empty()) fail("the file has nobody in \"people\"");
        if (!fault_.empty()) return wrong(file_, "not right: " + fault_);
        std::reverse(content.articles.begin(), content.articles.end());
        std::reverse(content.notifications.begin(), content.notifications.end());
        return content;
    }

private:
    void fail(std::string fault) {
        if (fault_.empty()) fault_ = std::move(fault);
    }

    /// Checks that the value is an object and has no keys but these.
    void check(const Json& value, std::initializer_list<std::string_view> keys) {
        if (!value.is_object()) return fail(where_ + " is not an object");
        for (const auto& item : value.items()) {
            if (std::find(keys.begin(), keys.end(), item.key()) == keys.end())
                fail(where_ + " has the unknown key " + inQuotes(item.key()));
        }
    }

    /// Calls `take` for every element of a list. Faults count the elements from 1. An absent list is empty.
    template <typename Take>
    void each(const Json& object, const char* key, const std::string& name, Take take) {
        const Json* list = find(object, key);
        if (!list) return;
        if (!list->is_array()) return fail(where_ + " has a value in " + inQuotes(key) + " that is not a list");
        const std::string outer = where_;
        int number = 0;
        for (const Json& element : *list) {
            where_ = name + " " + std::to_string(++number);
            if (outer != "the file") where_ += " of " + outer;
            take(element);
        }
        where_ = outer;
    }

    static const Json* find(const Json& object, const char* key) {
        if (!object.is_object()) return nullptr;
        auto found = object.find(key);
        return found == object.end() ? nullptr : &*found;
    }

    /// A text of at most `maximum` bytes. The limits are those of uploads.
    std::string text(const Json& object, const char* key, std::size_t maximum = ServerLimits::textBytes) {
        const Json* value = find(object, key);
        if (!value || !value->is_string()) {
            fail(where_ + " has no text " + inQuotes(key));
            return {};
        }
        auto text = value->get<std::string>();
        if (text.size() > maximum) fail(where_ + " has a text " + inQuotes(key) + " that is too long");
        if (!isValidText(text)) fail(where_ + " has a text " + inQuotes(key) + " with the character U+0000");
        return text;
    }
    std::string textIfAny(const Json& object, const char* key) {
        return find(object, key) ? text(object, key, ServerLimits::captionBytes) : std::string();
    }

    std::int64_t number(const Json& object, const char* key, std::int64_t greatest) {
        const Json* value = find(object, key);
        if (value && value->is_number_integer() && *value >= 0 && *value <= greatest) return value->get<std::int64_t>();
        fail(where_ + " has no number " + inQuotes(key) + " from 0 to " + std::to_string(greatest));
        return 0;
    }

    bool flag(const Json& object, const char* key, bool otherwise) {
        const Json* value = find(object, key);
        if (value && !value->is_boolean()) fail(where_ + " has neither true nor false in " + inQuotes(key));
        return value && value->is_boolean() ? value->get<bool>() : otherwise;
    }

    /// The index of the person who has this name.
    std::int64_t person(const Json& object, const char* key) {
        const std::string name = text(object, key);
        const auto found = std::find(names_.begin(), names_.end(), name);
        if (found == names_.end()) fail(where_ + " names " + inQuotes(name) + ", who is not in \"people\"");
        return found - names_.begin();
    }

    SamplePerson personOf(const Json& json) {
        check(json, {"name", "password", "portrait"});
        SamplePerson person{text(json, "name"), textIfAny(json, "password"), textIfAny(json, "portrait")};
        auto fault = nameFault(person.name);
        if (!fault && find(json, "password")) fault = passwordFault(person.password);
        if (fault) fail(where_ + " could not sign up (" + fault->text + ")");
        return person;
    }

    SampleMedium mediumOf(const Json& json, bool isVideo) {
        if (isVideo) {
            check(json, {"file", "thumbnail", "text"});
        } else {
            check(json, {"file", "text"});
        }
        return {text(json, "file"), isVideo ? text(json, "thumbnail") : "", textIfAny(json, "text")};
    }

    /// The list of lines as one text.
    std::string lines(const Json& object, const char* key) {
        const Json* value = find(object, key);
        if (!value || !value->is_array()) {
            fail(where_ + " has no list of lines " + inQuotes(key));
            return {};
        }
        std::string all;
        for (std::size_t index = 0; index < value->size(); ++index) {
            if (index > 0) all += '\n';
            all += text(Json{{key, (*value)[index]}}, key);
        }
        if (all.size() > ServerLimits::textBytes) fail(where_ + " has a text " + inQuotes(key) + " that is too long");
        return all;
    }

    SampleArticle articleOf(const Json& json) {
        check(json, {"author", "minutesAgo", "title", "text", "likes", "openComment", "images", "videos", "comments"});
        SampleArticle made;
        StoredArticle& article = made.imported.article;
        article.authorId = person(json, "author");
        article.title = text(json, "title", ServerLimits::titleBytes);
        article.text = lines(json, "text");
        const ServerTime age = number(json, "minutesAgo", longestAge) * minute;
        article.modified = now_ - age;
        article.openComment = flag(json, "openComment", true);
        const std::int64_t likes = find(json, "likes") ? number(json, "likes", mostLikes) : 0;
        for (std::int64_t like = 0; like < likes; ++like) {
            made.imported.likers.push_back("sample " + std::to_string(like));
        }
        each(json, "images", "image", [&](const Json& image) { made.images.push_back(mediumOf(image, false)); });
        each(json, "videos", "video", [&](const Json& video) { made.videos.push_back(mediumOf(video, true)); });
        each(json, "comments", "comment", [&](const Json& comment) {
            check(comment, {"author", "text"});
            made.imported.comments.push_back(
                {0, person(comment, "author"), "", 0, text(comment, "text", ServerLimits::commentForm)});
        });
        // The dates of the comments divide the time since the article's date into equal parts.
        const auto parts = static_cast<ServerTime>(made.imported.comments.size()) + 1;
        ServerTime date = article.modified;
        for (StoredComment& comment : made.imported.comments) comment.date = date += age / parts;
        return made;
    }

    StoredNotification messageOf(const Json& json) {
        check(json, {"from", "to", "minutesAgo", "title", "text", "isRead"});
        StoredNotification message;
        message.senderId = person(json, "from");
        message.recipientId = person(json, "to");
        message.date = now_ - number(json, "minutesAgo", longestAge) * minute;
        message.title = text(json, "title");
        message.text = text(json, "text");
        message.isRead = flag(json, "isRead", false);
        return message;
    }

    const std::filesystem::path file_;
    const ServerTime now_;
    std::vector<std::string> names_;
    /// The place that is being read, for the sentence of a fault.
    std::string where_;
    std::string fault_;
};

}  // namespace

ServerFailure unreadableSample(const std::filesystem::path& file) {
    return {ServerFault::badInput, "Cannot read the sample file " + file.string() + ": " + std::strerror(errno) + "."};
}

ServerResult<SampleContent> readSamples(const std::filesystem::path& folder, ServerTime now) {
    return ContentReader(folder / "samples.json", now).read();
}

}  // namespace articleserver
