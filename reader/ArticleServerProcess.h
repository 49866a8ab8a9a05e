#pragma once

#include <QProcess>

#include <string>
#include <vector>

namespace ostrel {

/// The article server as a child process on a loopback port that the system chooses. It ends with this object, and
/// also when this process dies.
class ArticleServerProcess final {
public:
    /// How long a start may take, milliseconds: the first one brings in the sample articles.
    static constexpr int startTimeout = 60000;

    ~ArticleServerProcess();

    /// Starts it on `dataFolder` and waits until it listens. False with a sentence in `error` when it does not.
    bool start(const std::string& dataFolder, std::string* error);
    /// Ends it and waits; start may be called again (the same port when `samePort`).
    void stop();
    bool restartOnSamePort(std::string* error);

    /// "http://127.0.0.1:PORT/"
    const std::string& address() const { return address_; }
    struct Account {
        std::string name, password;
    };
    const std::vector<Account>& accounts() const { return accounts_; }
    const std::string& dataFolder() const { return dataFolder_; }

private:
    bool launch(int port, std::string* error);
    QProcess process_;
    std::string dataFolder_, address_;
    std::vector<Account> accounts_;
};

}  // namespace ostrel
