#pragma once

#include "articleserver/common/ServerResult.h"
#include "articleserver/common/ServerText.h"
#include "articleserver/store/ArticleStore.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace articleserver {

struct ArticleServerOptions {
    /// Created when missing. One server at a time uses it.
    std::filesystem::path dataFolder;
    std::string host = "127.0.0.1";
    /// 0: one that the system chooses.
    int port = 0;
    /// "https://example.org": what stands in front of article and media addresses when the server is reached
    /// through another name than clients' Host headers say. Empty: the Host header.
    std::string publicUrl;
    /// What an empty database is filled with, as samples/README.md describes it; absent: nothing.
    std::optional<std::filesystem::path> sampleFolder;
    std::function<ServerTime()> now = systemTime;
};

/// An account of the sample content that one can sign in with.
struct SampleAccount {
    std::string name;
    std::string password;
};

/// The article web server: HTTP routes over an SQLite file and a folder of media files. Runs on threads of
/// its own from start() until stop() or destruction. Owned by whoever started it; start, stop and
/// destruction on one thread.
class ArticleServer final {
public:
    /// Serves when it returns. A failure's text is one sentence for the person who started it: the folder
    /// cannot be used or is in use, the port is taken, an option makes no sense.
    static ServerResult<std::unique_ptr<ArticleServer>> start(const ArticleServerOptions& options);
    ArticleServer(const ArticleServer&) = delete;
    ArticleServer& operator=(const ArticleServer&) = delete;
    ~ArticleServer();

    int port() const;
    /// "http://127.0.0.1:PORT", without a slash at its end.
    const std::string& url() const;
    /// Those sample accounts that this database has, each with a password that opens it.
    const std::vector<SampleAccount>& sampleAccounts() const;
    /// For reading and, in tests, for adding what no request adds. Safe beside requests.
    ArticleStore& store();

    /// Refuses new connections, ends the open ones and waits for their threads. May be called twice.
    void stop();

private:
    struct Parts;
    explicit ArticleServer(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace articleserver
