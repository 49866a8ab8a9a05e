#include "articleserver/ArticleServer.h"

#include "articleserver/http/HttpServer.h"
#include "articleserver/media/MediaFolder.h"
#include "articleserver/routes/ArticleService.h"
#include "articleserver/SampleImport.h"
#include "articleserver/store/SqliteArticleStore.h"

#include <fcntl.h>
#include <sodium.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <optional>

namespace articleserver {

namespace {

ServerFailure startFailure(std::string text) { return {ServerFault::internal, std::move(text)}; }

/// Holds the lock on the data folder. The system releases the lock when the process ends, even by a crash.
class FolderLock final {
public:
    FolderLock() = default;
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;
    ~FolderLock() {
        if (descriptor_ >= 0) ::close(descriptor_);
    }

    ServerResult<void> take(const std::filesystem::path& folder) {
        const std::string path = folder / "lock";
        descriptor_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (descriptor_ < 0) {
            return startFailure("Cannot write to the data folder " + folder.string() + ": " + std::strerror(errno) +
                                ".");
        }
        if (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
            return startFailure("Another server is using the data folder " + folder.string() + ".");
        }
        return {};
    }

private:
    int descriptor_ = -1;
};

/// The public address without a slash at its end; absent when the text is not such an address.
std::optional<std::string> publicUrlOf(std::string text) {
    if (text.ends_with('/')) text.pop_back();
    std::string_view rest = text;
    if (rest.starts_with("https://")) {
        rest.remove_prefix(8);
    } else if (rest.starts_with("http://")) {
        rest.remove_prefix(7);
    } else {
        return std::nullopt;
    }
    return isHostAndPort(rest) ? std::optional(text) : std::nullopt;
}

}  // namespace

// Each member uses only members above it, so that the destructor stops the server before it destroys the
// rest.
struct ArticleServer::Parts {
    FolderLock lock;
    std::unique_ptr<SqliteArticleStore> store;
    std::unique_ptr<MediaFolder> media;
    std::unique_ptr<ArticleService> service;
    std::unique_ptr<HttpServer> http;
    std::vector<SampleAccount> sampleAccounts;
    int port = 0;
    std::string url;
};

ArticleServer::ArticleServer(std::unique_ptr<Parts> parts) : parts_(std::move(parts)) {}

ArticleServer::~ArticleServer() { stop(); }

ServerResult<std::unique_ptr<ArticleServer>> ArticleServer::start(const ArticleServerOptions& options) {
    if (sodium_init() < 0) return startFailure("The cryptography library cannot be used.");
    if (options.port < 0 || options.port > 65535) return startFailure("The port must be from 0 to 65535.");
    std::string publicUrl;
    if (!options.publicUrl.empty()) {
        auto valid = publicUrlOf(options.publicUrl);
        if (!valid) return startFailure("The public address must be http:// or https:// and a host.");
        publicUrl = *valid;
    }

    auto parts = std::make_unique<Parts>();
    std::error_code error;
    std::filesystem::create_directories(options.dataFolder, error);
    if (error) {
        return startFailure("Cannot create the data folder " + options.dataFolder.string() + ": " + error.message() +
                            ".");
    }
    auto locked = parts->lock.take(options.dataFolder);
    if (!locked) return locked.failure();

    auto store = SqliteArticleStore::open(options.dataFolder / "articles.sqlite");
    if (!store)
        return startFailure("Cannot open the database in " + options.dataFolder.string() + ": " + store.failure().text);
    parts->store = std::move(*store);
    parts->media = std::make_unique<MediaFolder>(options.dataFolder / "media");
    auto names = parts->store->mediaNames();
    if (!names) return names.failure();
    auto prepared = parts->media->prepare(*names);
    if (!prepared) return prepared.failure();

    if (options.sampleFolder) {
        auto accounts = importSamples(*options.sampleFolder, *parts->store, *parts->media, options.now());
        if (!accounts) return accounts.failure();
        parts->sampleAccounts = std::move(*accounts);
    }

    parts->service = std::make_unique<ArticleService>(*parts->store, *parts->media, publicUrl, options.now);
    parts->http = std::make_unique<HttpServer>(*parts->service);
    auto port = parts->http->bind(options.host, options.port);
    if (!port) return port.failure();
    parts->port = *port;
    bool isVersion6 = options.host.find(':') != std::string::npos;
    parts->url = "http://" + (isVersion6 ? "[" + options.host + "]" : options.host) + ":" + std::to_string(*port);
    parts->service->setLocalUrl(parts->url);
    auto started = parts->http->start();
    if (!started) return started.failure();
    return std::unique_ptr<ArticleServer>(new ArticleServer(std::move(parts)));
}

int ArticleServer::port() const { return parts_->port; }

const std::string& ArticleServer::url() const { return parts_->url; }

const std::vector<SampleAccount>& ArticleServer::sampleAccounts() const { return parts_->sampleAccounts; }

ArticleStore& ArticleServer::store() { return *parts_->store; }

void ArticleServer::stop() { parts_->http->stop(); }

}  // namespace articleserver
