#include "articleserver/SampleImport.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/routes/MediaDoor.h"
#include "articleserver/routes/PasswordHasher.h"
#include "articleserver/SampleReader.h"

#include <algorithm>
#include <atomic>
#include <fstream>
#include <functional>
#include <initializer_list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace articleserver {

namespace {

constexpr std::size_t block = 256 * 1024;

ServerFailure importFailure(std::string text) { return {ServerFault::badInput, std::move(text)}; }

using Task = std::function<ServerResult<ServerDone>()>;

/// Runs the tasks on as many threads as pictures may be decoded at once; a failure of one keeps the next from starting.
ServerResult<ServerDone> runAll(const std::vector<Task>& tasks) {
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> hasFailed = false;
    std::mutex mutex;
    std::optional<ServerFailure> failure;
    const auto work = [&] {
        for (std::size_t at = next++; at < tasks.size() && !hasFailed; at = next++) {
            auto done = tasks[at]();
            if (done) continue;
            std::lock_guard lock(mutex);
            if (!hasFailed.exchange(true)) failure = done.failure();
        }
    };
    const unsigned count =
        std::min<unsigned>(std::thread::hardware_concurrency(), ServerLimits::picturesAtOnce);
    std::vector<std::jthread> helpers;
    for (unsigned helper = 1; helper < count; ++helper) helpers.emplace_back(work);
    work();
    helpers.clear();
    if (failure) return *failure;
    return ServerDone{};
}

/// Brings the media in. Those that came go again with this object, unless the store took the content. Any thread.
class MediaImport final {
public:
    MediaImport(std::filesystem::path folder, MediaFolder& media)
        : folder_(std::move(folder)), media_(media), door_(media) {}
    MediaImport(const MediaImport&) = delete;
    MediaImport& operator=(const MediaImport&) = delete;
    ~MediaImport() { media_.remove(taken_); }

    void keep() { taken_.clear(); }

    ServerResult<ServerDone> takePortrait(const std::string& name, StoredUser& user) {
        auto file = read(name, "jpg", ServerLimits::avatarFile);
        if (!file) return file.failure();
        auto avatar = door_.takeAvatar((*file)->bytes());
        if (!avatar) return refused(name, avatar.failure());
        user.avatar = *avatar;
        note({*avatar});
        return ServerDone{};
    }

    ServerResult<ServerDone> takeImage(const SampleMedium& medium, StoredImage& image) {
        auto file = read(medium.file, "jpg", ServerLimits::imageFile);
        if (!file) return file.failure();
        auto taken = door_.takeImage(**file);
        if (!taken) return refused(medium.file, taken.failure());
        image = *taken;
        image.text = medium.caption;
        note({image.file, image.thumbnail});
        return ServerDone{};
    }

    ServerResult<ServerDone> takeVideo(const SampleMedium& medium, StoredVideo& video) {
        auto clip = read(medium.file, "mp4", ServerLimits::videoFile);
        if (!clip) return clip.failure();
        auto still = read(medium.still, "jpg", ServerLimits::stillFile);
        if (!still) return still.failure();
        auto taken = door_.takeVideo(**clip, **still);
        if (!taken) return refused(medium.file + " with its still " + medium.still, taken.failure());
        video = *taken;
        video.text = medium.caption;
        note({video.file, video.thumbnail});
        return ServerDone{};
    }

private:
    void note(std::initializer_list<std::string> names) {
        std::lock_guard lock(mutex_);
        taken_.insert(taken_.end(), names);
    }

    ServerFailure refused(const std::string& name, const ServerFailure& failure) const {
        return importFailure("The sample file " + (folder_ / name).string() +
                             " was refused: " + failure.text);
    }

    /// A file of the folder on its way into the media folder.
    ServerResult<std::unique_ptr<IncomingFile>> read(const std::string& name, std::string_view extension,
                                                     std::uint64_t maximum) {
        const std::filesystem::path path = folder_ / name;
        std::ifstream stream(path, std::ios::binary);
        if (!stream) return unreadableSample(path);
        auto file = media_.receive(extension);
        if (!file) return file.failure();
        std::string bytes(block, '\0');
        // A folder can be opened, but not read.
        while (stream) {
            stream.read(bytes.data(), static_cast<std::streamsize>(block));
            auto count = static_cast<std::size_t>(stream.gcount());
            auto appended = (*file)->append(std::string_view(bytes).substr(0, count));
            if (!appended) return appended.failure();
            if ((*file)->size() > maximum)
                return importFailure("The sample file " + path.string() + " is too large.");
        }
        if (!stream.eof()) return unreadableSample(path);
        auto flushed = (*file)->flush();
        if (!flushed) return flushed.failure();
        return file;
    }

    const std::filesystem::path folder_;
    MediaFolder& media_;
    MediaDoor door_;
    std::mutex mutex_;
    std::vector<std::string> taken_;  ///< guarded by mutex_ while tasks run
};

ServerResult<ServerDone> fill(const SampleContent& content, const std::filesystem::path& folder,
                              ArticleStore& store, MediaFolder& media, ServerTime now) {
    ImportedContent imported;
    imported.date = now;
    imported.notifications = content.notifications;
    for (const SampleArticle& article : content.articles) imported.articles.push_back(article.imported);
    imported.users.resize(content.people.size());

    MediaImport files(folder, media);
    PasswordHasher hasher;
    std::vector<Task> tasks;
    for (std::size_t index = 0; index < content.people.size(); ++index) {
        const SamplePerson& person = content.people[index];
        StoredUser& user = imported.users[index];
        user.name = person.name;
        if (!person.password.empty()) {
            tasks.push_back([&]() -> ServerResult<ServerDone> {
                auto hash = hasher.hash(person.password);
                if (!hash) return hash.failure();
                user.passwordHash = *hash;
                return ServerDone{};
            });
        }
        if (!person.portrait.empty()) {
            tasks.push_back([&] { return files.takePortrait(person.portrait, user); });
        }
    }
    for (std::size_t index = 0; index < content.articles.size(); ++index) {
        const SampleArticle& article = content.articles[index];
        StoredArticle& stored = imported.articles[index].article;
        stored.images.resize(article.images.size());
        stored.videos.resize(article.videos.size());
        for (std::size_t at = 0; at < article.images.size(); ++at) {
            tasks.push_back([&, at] { return files.takeImage(article.images[at], stored.images[at]); });
        }
        for (std::size_t at = 0; at < article.videos.size(); ++at) {
            tasks.push_back([&, at] { return files.takeVideo(article.videos[at], stored.videos[at]); });
        }
    }
    auto done = runAll(tasks);
    if (!done) return done;
    auto stored = store.importInto(imported);
    if (!stored) {
        return importFailure("The samples of " + folder.string() + " were refused: " + stored.failure().text);
    }
    files.keep();
    return stored;
}

}  // namespace

ServerResult<std::vector<SampleAccount>> bringInSamples(const std::filesystem::path& folder,
                                                        ArticleStore& store, MediaFolder& media,
                                                        ServerTime now) {
    auto content = readSamples(folder, now);
    if (!content) return content.failure();
    auto isEmpty = store.isEmpty();
    if (!isEmpty) return isEmpty.failure();
    if (*isEmpty) {
        auto filled = fill(*content, folder, store, media, now);
        if (!filled) return filled.failure();
    }

    std::vector<SampleAccount> accounts;
    PasswordHasher hasher;
    for (const SamplePerson& person : content->people) {
        if (person.password.empty()) continue;
        // A store that was just filled has them all; any other may know the name with another password.
        bool isOpen = *isEmpty;
        if (!isOpen) {
            auto user = store.userNamed(person.name);
            if (!user) return user.failure();
            auto matches =
                *user ? hasher.matches((*user)->passwordHash, person.password) : ServerResult(false);
            if (!matches) return matches.failure();
            isOpen = *matches;
        }
        if (isOpen) accounts.push_back({person.name, person.password});
    }
    return accounts;
}

}  // namespace articleserver
