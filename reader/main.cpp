// The reader: the smallest program that shows the module on a server, which is its own unless --server names another.

#include "backends/qt/QtPlatform.h"
#include "reader/application/ReaderApplication.h"
#include "reader/application/ReaderCommandLine.h"
#include "reader/application/ReaderEnvironment.h"
#include "reader/services/ArticleServerProcess.h"
#include "reader/services/KeychainSessionStore.h"

#include <QApplication>
#include <QStandardPaths>

#include <CLI/CLI.hpp>

#include <cstdio>

using namespace ostrel;

namespace {

int fail(const std::string& why) {
    std::fprintf(stderr, "ostrel-reader: %s\n", why.c_str());
    return 1;
}

void printServer(const ArticleServerProcess& server) {
    std::printf("The article server listens on %s, its data are in %s\n", server.address().c_str(),
                server.dataFolder().c_str());
    for (const auto& account : server.accounts()) {
        std::printf("Sample account: %s, password %s\n", account.name.c_str(), account.password.c_str());
    }
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    ReaderOptions options;
    std::string address, dataFolder;
    CLI::App app{"Reads and writes articles. Without --server it starts an article server of its own, with sample\n"
                 "articles and two accounts.",
                 "ostrel-reader"};
    app.add_option("--server", address, "Base address of a server that runs elsewhere")->type_name("URL");
    app.add_option("--data", dataFolder, "Folder of the own server's articles")->type_name("DIR");
    app.add_option("--pictures", options.picturesFolder, "Folder of the pictures to choose from")->type_name("DIR");
    app.add_option("--videos", options.videosFolder, "Folder of the clips to choose from")->type_name("DIR");
    addWindowOptions(app, options);
    if (const auto status = parseCommandLine(app, argc, argv)) return *status;

    setQtEnvironment(options);
    // An application with widgets, because the dialog that chooses files is made of them.
    QApplication application(argc, argv);
    QApplication::setApplicationName("ostrel-reader");
    QApplication::setApplicationDisplayName("Ostrel Reader");
    QtPlatform::install(QtPlatform::Options{.language = options.language});
    const std::string own = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation).toStdString();
    options.homeFolder = own + "/home";

    std::string error;
    ArticleServerProcess server;
    // One entry of the keychain for each server. The port of the own server changes with every start, its folder does
    // not.
    std::string sessionName = address;
    if (address.empty()) {
        if (!server.start(dataFolder.empty() ? own + "/server" : dataFolder, &error)) return fail(error);
        printServer(server);
        address = server.address();
        sessionName = "own server " + server.dataFolder();
    }
    ReaderApplication reader(options, address, std::make_shared<KeychainSessionStore>(sessionName));
    if (!reader.open(&error)) return fail(error);
    if (qEnvironmentVariableIsSet("OSTREL_READER_QUIT_AFTER_LIST")) reader.quitAfterFirstList();
    return QApplication::exec();
}
