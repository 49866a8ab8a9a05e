#include "tour/Tour.h"

#include "tour/guide/TourMedia.h"
#include "tour/walks/DetailTour.h"
#include "tour/walks/ListTour.h"
#include "tour/walks/LogTour.h"
#include "tour/walks/WriteTour.h"

#include <QDir>
#include <QTemporaryDir>

#include <cstdio>

namespace ostrel {

namespace {

int fail(const std::string& why) {
    std::fprintf(stderr, "ostrel-tour: %s\n", why.c_str());
    return 1;
}

}  // namespace

int runTour(const TourOptions& asked) {
    TourOptions options = asked;
    if (!QDir().mkpath(QString::fromStdString(options.folder))) {
        return fail("The folder " + options.folder + " cannot be made.");
    }
    QTemporaryDir data;
    if (!data.isValid())
        return fail("A folder for the tour's data cannot be made: " + data.errorString().toStdString());

    std::string error;
    ArticleServerProcess server;
    if (!server.start(data.filePath("server").toStdString(), &error)) return fail(error);
    std::vector<TourStep> steps;
    {
        const std::string media = data.filePath("media").toStdString();
        if (!makeTourMedia(media, server.dataFolder()))
            return fail("The pictures of the tour cannot be written to " + media + ".");
        options.reader.homeFolder = data.filePath("home").toStdString();
        options.reader.picturesFolder = media + "/pictures";
        options.reader.videosFolder = media + "/videos";
        ReaderApplication reader(options.reader, server.address(), std::make_shared<MemorySessionStore>());
        if (!reader.open(&error)) return fail(error);
        ListTour(options, reader, server, steps).run();
        DetailTour(options, reader, server, steps).run();
        LogTour(options, reader, server, steps).run();
        WriteTour(options, reader, server, steps).run();
    }
    const std::string report = options.folder + "/tour.json";
    if (!writeTourReport(report, options.reader.idiomName, steps))
        return fail("The report " + report + " cannot be written.");
    std::size_t failed = 0;
    for (const TourStep& step : steps) failed += step.ok() ? 0 : 1;
    std::printf("%zu passed, %zu failed. Pictures and tour.json are in %s\n", steps.size() - failed, failed,
                options.folder.c_str());
    return steps.empty() || failed > 0 ? 1 : 0;
}

}  // namespace ostrel
