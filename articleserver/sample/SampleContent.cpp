#include "articleserver/sample/SampleContent.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/PasswordHasher.h"

#include <algorithm>
#include <array>
#include <optional>

namespace ostrel {

namespace {

constexpr ServerTime minute = 60'000;
constexpr int portraitQuality = 86;

struct SamplePerson {
    std::string_view name;
    std::string_view password;  ///< empty: nobody signs in as this person
    bool hasPortrait;
};

// In the order of SampleAuthor.
constexpr std::array<SamplePerson, 8> people = {{
    {"Ada Fern", "snowdrop-teapot", true},
    {"林小满", "", true},
    {"Marek Voss", "", false},
    {"温知远", "", false},
    {"Imani Brook", "", true},
    {"Oskar Lind", "ferry-lantern", false},
    {"Yara Salem", "", false},
    {"Tove Aske", "", true},
}};

struct SampleMessage {
    SampleAuthor from;
    SampleAuthor to;
    int age;  ///< minutes
    std::string_view text;
    bool isRead = false;
};

// Oldest first; to the two who can sign in.
constexpr std::array<SampleMessage, 5> messages = {{
    {SampleAuthor::Imani, SampleAuthor::Ada, 7300, "Hello! The plane tree has a twin behind the market hall.",
     true},
    {SampleAuthor::Yara, SampleAuthor::Oskar, 2900, "Was the door still locked today?"},
    {SampleAuthor::Marek, SampleAuthor::Ada, 1450,
     "I looked up. You were right about the clock over the school."},
    {SampleAuthor::Lin, SampleAuthor::Ada, 190, "你好!下次一起散步吧。"},
    {SampleAuthor::Tove, SampleAuthor::Ada, 25, ""},
}};

/// All of them, oldest first.
std::vector<SampleArticle> sampleArticles() {
    std::vector<SampleArticle> all;
    for (auto* part : {sampleArticlesOfStreets, sampleArticlesOfTable, sampleArticlesOfGarden,
                       sampleArticlesOfFarAway, sampleArticlesOfWorkshop, shortSampleArticles,
                       chineseSampleArticles, longerChineseSampleArticles}) {
        std::vector<SampleArticle> articles = part();
        std::move(articles.begin(), articles.end(), std::back_inserter(all));
    }
    std::stable_sort(all.begin(), all.end(), [](const SampleArticle& left, const SampleArticle& right) {
        return left.age > right.age;
    });
    return all;
}

/// Makes the content, keeping the names of the files it adds in `files`.
class SampleMaker final {
public:
    SampleMaker(MediaFolder& media, SampleGallery& gallery, ServerTime now)
        : media_(media), gallery_(gallery), now_(now) {}

    const std::vector<std::string>& files() const { return files_; }

    ServerResult<ImportedContent> make() {
        ImportedContent content;
        content.date = now_;
        PasswordHasher hasher;
        for (std::size_t index = 0; index < people.size(); ++index) {
            const SamplePerson& person = people[index];
            StoredUser user{0, std::string(person.name), "", ""};
            if (!person.password.empty()) {
                auto hash = hasher.hash(person.password);
                if (!hash) return hash.failure();
                user.passwordHash = *hash;
            }
            if (person.hasPortrait) {
                auto portrait =
                    paintPortrait(ServerLimits::storedAvatarSide, static_cast<std::uint32_t>(portraits_++));
                auto file = add(portrait.jpeg(portraitQuality), "jpg");
                if (!file) return file.failure();
                user.avatar = *file;
            }
            content.users.push_back(std::move(user));
        }
        const std::vector<SampleArticle> articles = sampleArticles();
        auto ordered = order(articles);
        if (!ordered) return ordered.failure();
        for (const SampleArticle& article : articles) {
            auto imported = make(article);
            if (!imported) return imported.failure();
            content.articles.push_back(std::move(*imported));
        }
        for (const SampleMessage& message : messages) {
            StoredNotification notification;
            notification.senderId = static_cast<std::int64_t>(message.from);
            notification.recipientId = static_cast<std::int64_t>(message.to);
            notification.date = now_ - message.age * minute;
            notification.title = "Touch You";
            notification.text = message.text;
            notification.isRead = message.isRead;
            content.notifications.push_back(std::move(notification));
        }
        return content;
    }

private:
    ServerResult<std::string> add(std::string_view bytes, std::string_view extension) {
        auto name = media_.add(bytes, extension);
        if (name) files_.push_back(*name);
        return name;
    }

    ServerResult<ServerDone> order(const std::vector<SampleArticle>& articles) {
        for (const SampleArticle& article : articles) {
            for (const SampleImage& image : article.images) {
                auto seed = static_cast<std::uint32_t>(ordered_.size()) + 1;
                ordered_.push_back({image.scene, image.width, image.height, seed, image.orientation});
            }
        }
        return gallery_.order(ordered_);
    }

    ServerResult<ImportedArticle> make(const SampleArticle& sample) {
        ImportedArticle imported;
        StoredArticle& article = imported.article;
        article.authorId = static_cast<std::int64_t>(sample.author);
        article.title = sample.title;
        article.text = sample.text;
        article.modified = now_ - sample.age * minute;
        article.openComment = sample.openComment;
        for (const SampleImage& image : sample.images) {
            const PaintOrder& picture = ordered_.at(used_++);
            article.images.push_back(
                {0, picture.file, picture.thumbnail, image.width, image.height, std::string(image.caption)});
        }
        for (const SampleVideo& video : sample.videos) {
            const SampleClipFiles clip = filesOf(video.clip);
            auto file = add(clip.video, "mp4");
            if (!file) return file.failure();
            auto still = add(clip.still, "jpg");
            if (!still) return still.failure();
            article.videos.push_back(
                {0, *file, *still, clip.width, clip.height, clip.duration, std::string(video.caption)});
        }
        // Comments came one after the other since the article did.
        auto parts = static_cast<ServerTime>(sample.comments.size()) + 1;
        ServerTime date = article.modified;
        for (const SampleComment& comment : sample.comments) {
            date += sample.age * minute / parts;
            imported.comments.push_back(
                {0, static_cast<std::int64_t>(comment.author), "", date, std::string(comment.text)});
        }
        for (int like = 0; like < sample.likes; ++like) {
            imported.likers.push_back("sample " + std::to_string(like));
        }
        return imported;
    }

    MediaFolder& media_;
    SampleGallery& gallery_;
    ServerTime now_;
    std::vector<std::string> files_;
    std::vector<PaintOrder> ordered_;
    std::size_t used_ = 0;
    int portraits_ = 0;
};

/// The sample accounts that the store has and that their passwords open.
ServerResult<std::vector<SampleAccount>> accountsOf(const ArticleStore& store) {
    std::vector<SampleAccount> accounts;
    PasswordHasher hasher;
    for (const SamplePerson& person : people) {
        if (person.password.empty()) continue;
        auto user = store.userNamed(person.name);
        if (!user) return user.failure();
        if (!*user) continue;
        auto matches = hasher.matches((*user)->passwordHash, person.password);
        if (!matches) return matches.failure();
        if (*matches) accounts.push_back({std::string(person.name), std::string(person.password)});
    }
    return accounts;
}

/// Those of a store that was just filled, without a costly look at their passwords.
std::vector<SampleAccount> newAccounts() {
    std::vector<SampleAccount> accounts;
    for (const SamplePerson& person : people) {
        if (person.password.empty()) continue;
        accounts.push_back({std::string(person.name), std::string(person.password)});
    }
    return accounts;
}

}  // namespace

ServerResult<std::vector<SampleAccount>> fillWithSamples(ArticleStore& store, MediaFolder& media,
                                                         SampleGallery& gallery, ServerTime now) {
    auto isEmpty = store.isEmpty();
    if (!isEmpty) return isEmpty.failure();
    if (!*isEmpty) return accountsOf(store);
    // What a filling that did not end had ordered.
    gallery.cancel();
    SampleMaker maker(media, gallery, now);
    auto content = maker.make();
    auto imported = content ? store.importInto(*content) : ServerResult<ServerDone>(content.failure());
    if (!imported) {
        gallery.cancel();
        media.remove(maker.files());
        return imported.failure();
    }
    return newAccounts();
}

}  // namespace ostrel
