#include "backends/qt/QtPlatform.h"
#include "reader/application/ReaderCommandLine.h"
#include "reader/application/ReaderEnvironment.h"
#include "tour/Tour.h"

#include <QApplication>

#include <CLI/CLI.hpp>

using namespace ostrel;

int main(int argc, char** argv) {
    TourOptions options;
    CLI::App app{"Uses the reader's window by itself, on an article server and data of its own, checks each step\n"
                 "and writes a picture of it.",
                 "ostrel-tour"};
    app.add_option("DIR", options.folder, "Folder of the pictures and of tour.json")->required();
    addWindowOptions(app, options.reader);
    if (const auto status = parseCommandLine(app, argc, argv)) return *status;

    setQtEnvironment(options.reader);
    QApplication application(argc, argv);
    QApplication::setApplicationName("ostrel-tour");
    QApplication::setApplicationDisplayName("Ostrel Reader");
    QtPlatform::install(QtPlatform::Options{.language = options.reader.language});
    return runTour(options);
}
