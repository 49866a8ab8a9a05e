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
    /// Created when it does not exist. One server at a time can use a folder.
    std::filesystem::path dataFolder;
    std::string host = "127.0.0.1";
    /// 0: the system chooses a port.
    int port = 0;
    /// Scheme and host in front of the addresses of articles and media, such as "https://example.org", for a
    /// server behind a proxy. Empty: the addresses have the Host header of the request.
    std::string publicUrl;
    /// The folder of samples that fills an empty database, described by samples/README.md. Absent: the
    /// database stays empty.
    std::optional<std::filesystem::path> sampleFolder;
    std::function<ServerTime()> now = systemTime;
};

/// An account of the sample content, with the password for signing in.
struct SampleAccount {
    std::string name;
    std::string password;
};

/// The article web server: HTTP routes over an SQLite file and a folder of media files. It runs on its own
/// threads from start() until stop() or its destruction. The owner calls start, stop and the destructor on
/// one thread.
class ArticleServer final {
public:
    /// Returns a server that serves. The text of a failure is one sentence for the person who starts the
    /// server: the folder cannot be used or is in use, the port is taken, an option is not valid.
    static ServerResult<std::unique_ptr<ArticleServer>> start(const ArticleServerOptions& options);
    ArticleServer(const ArticleServer&) = delete;
    ArticleServer& operator=(const ArticleServer&) = delete;
    ~ArticleServer();

    int port() const;
    /// Such as "http://127.0.0.1:8080", without a slash at its end.
    const std::string& url() const;
    /// The sample accounts with which users can sign in: the database has them, with these passwords.
    const std::vector<SampleAccount>& sampleAccounts() const;
    /// The store of the running server. Any thread may use it while the server serves.
    ArticleStore& store();

    /// Refuses new connections, ends the open ones and waits for their threads. A second call does nothing.
    void stop();

private:
    struct Parts;
    explicit ArticleServer(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> parts_;
};

}  // namespace articleserver
