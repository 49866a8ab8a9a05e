#include "articleserver/SampleImport.h"

#include "articleserver/common/ServerLimits.h"
#include "articleserver/media/MediaIngest.h"
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

using Task = std::function<ServerResult<void>()>;

/// Runs the tasks on up to ServerLimits::picturesAtOnce threads. After the first failure no further task
/// starts.
ServerResult<void> runAll(const std::vector<Task>& tasks) {
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
    const unsigned count = std::min<unsigned>(std::thread::hardware_concurrency(), ServerLimits::picturesAtOnce);
    {
        std::vector<std::jthread> others;
        for (unsigned other = 1; other < count; ++other) others.emplace_back(work);
        work();
    }
    if (failure) return *failure;
    return {};
}

/// Copies the media of a sample folder into the media folder. The destructor removes them again, unless
/// keep() was called after the store had taken their records. Any thread may add media.
class MediaImport final {
public:
    MediaImport(std::filesystem::path folder, MediaFolder& media)
        : folder_(std::move(folder)), media_(media), ingest_(media) {}
    MediaImport(const MediaImport&) = delete;
    MediaImport& operator=(const MediaImport&) = delete;
    ~MediaImport() { media_.remove(taken_); }

    void keep() { taken_.clear(); }

    ServerResult<void> takePortrait(const std::string& name, StoredUser& user) {
        auto file = read(name, "jpg", ServerLimits::avatarFile);
        if (!file) return file.failure();
        auto avatar = ingest_.addAvatar((*file)->bytes());
        if (!avatar) return refused(name, avatar.failure());
        user.avatar = *avatar;
        note({*avatar});
        return {};
    }

    ServerResult<void> addImage(const SampleMedium& medium, StoredImage& image) {
        auto file = read(medium.file, "jpg", ServerLimits::imageFile);
        if (!file) return file.failure();
        auto taken = ingest_.addImage(**file);
        if (!taken) return refused(medium.file, taken.failure());
        image = *taken;
        image.text = medium.caption;
        note({image.file, image.thumbnail});
        return {};
    }

    ServerResult<void> addVideo(const SampleMedium& medium, StoredVideo& video) {
        auto clip = read(medium.file, "mp4", ServerLimits::videoFile);
        if (!clip) return clip.failure();
        auto still = read(medium.still, "jpg", ServerLimits::stillFile);
        if (!still) return still.failure();
        auto taken = ingest_.addVideo(**clip, **still);
        if (!taken) return refused(medium.file + " with its still " + medium.still, taken.failure());
        video = *taken;
        video.text = medium.caption;
        note({video.file, video.thumbnail});
        return {};
    }

private:
    void note(std::initializer_list<std::string> names) {
        std::lock_guard lock(mutex_);
        taken_.insert(taken_.end(), names);
    }

    ServerFailure refused(const std::string& name, const ServerFailure& failure) const {
        return importFailure("The sample file " + (folder_ / name).string() + " was refused: " + failure.text);
    }

    /// Copies a file of the sample folder into a new file of the media folder.
    ServerResult<std::unique_ptr<IncomingFile>> read(const std::string& name, std::string_view extension,
                                                     std::uint64_t maximum) {
        const std::filesystem::path path = folder_ / name;
        std::ifstream stream(path, std::ios::binary);
        if (!stream) return unreadableSample(path);
        auto file = media_.receive(extension);
        if (!file) return file.failure();
        std::string bytes(block, '\0');
        // A folder opens without an error; only reading it fails.
        while (stream) {
            stream.read(bytes.data(), static_cast<std::streamsize>(block));
            auto count = static_cast<std::size_t>(stream.gcount());
            auto appended = (*file)->append(std::string_view(bytes).substr(0, count));
            if (!appended) return appended.failure();
            if ((*file)->size() > maximum) return importFailure("The sample file " + path.string() + " is too large.");
        }
        if (!stream.eof()) return unreadableSample(path);
        auto flushed = (*file)->flush();
        if (!flushed) return flushed.failure();
        return file;
    }

    const std::filesystem::path folder_;
    MediaFolder& media_;
    MediaIngest ingest_;
    std::mutex mutex_;
    /// The names of the added media, guarded by mutex_ while tasks run.
    std::vector<std::string> taken_;
};

ServerResult<void> fill(const SampleContent& content, const std::filesystem::path& folder, ArticleStore& store,
                        MediaFolder& media, PasswordHasher& hasher, ServerTime now) {
    ImportedContent imported;
    imported.date = now;
    imported.notifications = content.notifications;
    for (const SampleArticle& article : content.articles) imported.articles.push_back(article.imported);
    imported.users.resize(content.people.size());

    MediaImport files(folder, media);
    std::vector<Task> tasks;
    for (std::size_t index = 0; index < content.people.size(); ++index) {
        const SamplePerson& person = content.people[index];
        StoredUser& user = imported.users[index];
        user.name = person.name;
        if (!person.password.empty()) {
            tasks.push_back([&]() -> ServerResult<void> {
                auto hash = hasher.hash(person.password);
                if (!hash) return hash.failure();
                user.passwordHash = *hash;
                return {};
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
            tasks.push_back([&, at] { return files.addImage(article.images[at], stored.images[at]); });
        }
        for (std::size_t at = 0; at < article.videos.size(); ++at) {
            tasks.push_back([&, at] { return files.addVideo(article.videos[at], stored.videos[at]); });
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

/// Finds out which of the people have accounts in the store that their passwords open.
ServerResult<std::vector<SampleAccount>> accountsIn(const ArticleStore& store, const SampleContent& content,
                                                    PasswordHasher& hasher) {
    // Not vector<bool>, whose elements cannot be written by several threads.
    std::vector<char> isOpen(content.people.size(), 0);
    std::vector<Task> tasks;
    for (std::size_t index = 0; index < content.people.size(); ++index) {
        const SamplePerson& person = content.people[index];
        if (person.password.empty()) continue;
        tasks.push_back([&, index]() -> ServerResult<void> {
            auto user = store.userNamed(person.name);
            if (!user) return user.failure();
            if (!*user) return {};
            auto matches = hasher.matches((*user)->passwordHash, person.password);
            if (!matches) return matches.failure();
            isOpen[index] = *matches;
            return {};
        });
    }
    auto done = runAll(tasks);
    if (!done) return done.failure();
    std::vector<SampleAccount> accounts;
    for (std::size_t index = 0; index < isOpen.size(); ++index) {
        if (isOpen[index]) accounts.push_back({content.people[index].name, content.people[index].password});
    }
    return accounts;
}

}  // namespace

ServerResult<std::vector<SampleAccount>> importSamples(const std::filesystem::path& folder, ArticleStore& store,
                                                       MediaFolder& media, ServerTime now) {
    auto isEmpty = store.isEmpty();
    if (!isEmpty) return isEmpty.failure();
    auto content = readSamples(folder, now);
    PasswordHasher hasher;
    if (!*isEmpty) {
        if (content) return accountsIn(store, *content, hasher);
        // The articles are in the database, so a folder that has been moved or edited must not stop the
        // server.
        logServerError("the sample accounts are not shown. " + content.failure().text);
        return std::vector<SampleAccount>();
    }
    if (!content) return content.failure();
    auto filled = fill(*content, folder, store, media, hasher, now);
    if (!filled) return filled.failure();
    std::vector<SampleAccount> accounts;
    for (const SamplePerson& person : content->people) {
        if (!person.password.empty()) accounts.push_back({person.name, person.password});
    }
    return accounts;
}

}  // namespace articleserver
