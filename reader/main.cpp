#include "backends/qt/QtPlatform.h"
#include "reader/ArticleServerProcess.h"
#include "reader/KeychainSessionStore.h"
#include "reader/ReaderApplication.h"
#include "tour/Tour.h"

#include <QApplication>
#include <QStandardPaths>

#include <cstdio>
#include <cstdlib>

using namespace ostrel;

namespace {

int fail(const std::string& why) {
    std::fprintf(stderr, "ostrel-reader: %s\n", why.c_str());
    return 1;
}

/// Without a GPU the scene is drawn by Qt's software renderer.
void chooseRenderer() {
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const bool offscreen = platform.startsWith("offscreen") || platform.startsWith("minimal");
    if (offscreen && qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) qputenv("QT_QUICK_BACKEND", "software");
}

}  // namespace

int main(int argc, char** argv) {
    const ReaderCommandLine commandLine = parseReaderCommandLine(argc, argv);
    if (!commandLine.options) return commandLine.exitStatus;
    ReaderOptions options = *commandLine.options;
    if (options.scale > 0) qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale));
    chooseRenderer();

    // With widgets, for the dialog that chooses files.
    QApplication application(argc, argv);
    QApplication::setApplicationName("ostrel-reader");
    QApplication::setApplicationDisplayName("Ostrel Reader");
    QtPlatform::install(QtPlatform::Options{.language = options.language});
    if (!options.tourFolder.empty()) return runTour(options);
    const std::string own = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation).toStdString();
    options.homeFolder = own + "/home";

    std::string error;
    ArticleServerProcess server;
    std::string address = options.server;
    if (address.empty()) {
        const std::string data = options.dataFolder.empty() ? own + "/server" : options.dataFolder;
        if (!server.start(data, &error)) return fail(error);
        address = server.address();
        std::printf("The article server listens on %s, its data are in %s\n", address.c_str(), data.c_str());
        for (const auto& account : server.accounts()) {
            std::printf("Sample account: %s, password %s\n", account.name.c_str(), account.password.c_str());
        }
        std::fflush(stdout);
    }
    // The own server's port changes with every start, its accounts do not.
    const std::string sessionName = options.server.empty() ? "own server " + server.dataFolder() : address;
    ReaderApplication reader(options, address, std::make_shared<KeychainSessionStore>(sessionName));
    if (!reader.open(&error)) return fail(error);
    if (qEnvironmentVariableIsSet("OSTREL_READER_QUIT_AFTER_LIST")) reader.quitAfterFirstList();
    return QApplication::exec();
}
