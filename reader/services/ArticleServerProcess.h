#pragma once

#include <QProcess>

#include <string>
#include <vector>

namespace ostrel {

/// The article server as a child process on a loopback port that the system chooses. The server ends with this object,
/// and also when this process dies. An embedder whose server runs elsewhere needs none. Main thread.
class ArticleServerProcess final {
public:
    /// How long a start may take, in milliseconds: the first start writes the sample articles.
    static constexpr int startTimeout = 60000;

    ~ArticleServerProcess();

    /// Starts the server on `dataFolder` and blocks until the server listens. False with a sentence in `error` when it
    /// does not.
    bool start(const std::string& dataFolder, std::string* error);
    /// Ends the server and blocks until its process is gone. No operation when the server does not run.
    void stop();
    /// Starts the server again on the same data and port after stop().
    bool restartOnSamePort(std::string* error);

    /// "http://127.0.0.1:PORT/"
    const std::string& address() const { return address_; }
    struct Account {
        std::string name, password;
    };
    /// The sample accounts, of which there are two at least.
    const std::vector<Account>& accounts() const { return accounts_; }
    /// The folder of the server's database and media.
    const std::string& dataFolder() const { return dataFolder_; }

private:
    bool launch(int port, std::string* error);
    QProcess process_;
    std::string dataFolder_, address_;
    std::vector<Account> accounts_;
};

}  // namespace ostrel
