#include "articleserver/ArticleServer.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <ctime>
#include <iostream>
#include <unistd.h>

namespace {

constexpr int failed = 1;
constexpr int misused = 2;
constexpr long parentWatchNanoseconds = 250'000'000;

/// Waits for a signal to stop or, when asked, for the death of the process that started this one.
void waitForEnd(const sigset_t& signals, bool exitWithParent, pid_t parent) {
    for (;;) {
        timespec slice{0, parentWatchNanoseconds};
        if (sigtimedwait(&signals, nullptr, &slice) > 0) return;
        // An orphan gets another parent. PR_SET_PDEATHSIG is no alternative, because it reports the end of
        // the thread that started this process, not of the whole parent.
        if (exitWithParent && ::getppid() != parent) return;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const pid_t parent = ::getppid();
    articleserver::ArticleServerOptions options;
    std::string dataFolder, sampleFolder;
    bool exitWithParent = false;

    CLI::App app("The web server of articles: accounts, articles and their media over HTTP.", "ostrel-article-server");
    app.add_option("--data", dataFolder, "Folder of the database and the media files; created when missing")
        ->required();
    app.add_option("--host", options.host, "Address to listen on")->capture_default_str();
    app.add_option("--port", options.port, "Port to listen on; 0 lets the system choose")
        ->check(CLI::Range(0, 65535))
        ->capture_default_str();
    app.add_option("--public-url", options.publicUrl,
                   "Scheme and host in front of the addresses of articles and media; default: as asked for");
    app.add_option("--sample", sampleFolder,
                   "Folder of sample articles (see samples/README.md) to fill an empty database with");
    app.add_flag("--exit-with-parent", exitWithParent, "Stop when the process that started the server ends");
    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        return app.exit(wish);
    } catch (const CLI::ParseError& error) {
        std::cerr << "ostrel-article-server: " << error.what() << std::endl;
        return misused;
    }
    options.dataFolder = dataFolder;
    if (app.count("--sample") > 0) options.sampleFolder = sampleFolder;

    // The signals are blocked before any thread starts, so that only waitForEnd() receives them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    std::signal(SIGPIPE, SIG_IGN);
    // A write beyond the limit for file sizes then fails like a write to a full disk and does not end the
    // process.
    std::signal(SIGXFSZ, SIG_IGN);

    auto server = articleserver::ArticleServer::start(options);
    if (!server) {
        std::cerr << "ostrel-article-server: " << server.failure().text << std::endl;
        return failed;
    }
    std::cout << "ostrel-article-server: listening on " << (*server)->url() << "/" << std::endl;
    for (const articleserver::SampleAccount& account : (*server)->sampleAccounts()) {
        std::cout << "sample account: " << account.name << " / " << account.password << std::endl;
    }
    waitForEnd(signals, exitWithParent, parent);
    (*server)->stop();
    return 0;
}
