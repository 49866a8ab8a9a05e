#include "bench/support/Bench.h"
#include "bench/support/BenchArticleServer.h"

#include <QElapsedTimer>
#include <QProcess>

namespace ostrel {

namespace {

/// Milliseconds from starting `program` until it prints that its list is painted; negative when it does not print that.
double timeToList(const QString& program, const QStringList& arguments) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_QPA_PLATFORM", "offscreen");
    environment.insert("QT_QUICK_BACKEND", "software");
    environment.insert("OSTREL_READER_QUIT_AFTER_LIST", "1");
    process.setProcessEnvironment(environment);
    QElapsedTimer since;
    since.start();
    process.start(program, arguments);
    QByteArray said;
    while (since.elapsed() < 30000) {
        process.waitForReadyRead(20);
        said += process.readAllStandardOutput();
        if (said.contains("first list painted")) {
            const double milliseconds = static_cast<double>(since.nsecsElapsed()) / 1e6;
            if (!process.waitForFinished(5000)) process.kill();
            return milliseconds;
        }
        if (process.state() == QProcess::NotRunning) break;
    }
    process.kill();
    process.waitForFinished(1000);
    return -1;
}

std::vector<BenchResult> start(const BenchSettings& settings) {
    BenchResult failed{.name = "start", .goal = 1.2, .unit = "ms", .fault = "the article server did not start"};
    const BenchArticleServer server(QStringList{"--sample", besideThis("../share/ostrel-article/samples")});
    if (server.address().isEmpty()) return {failed};
    BenchResult result = interleaved(
        "start", 1.2, "ms", settings.rounds,
        [&] {
            return timeToList(besideThis("ostrel-reader"), {"--server", server.address()});
        },
        [&] {
            return timeToList(besideThis("ostrel-bench"), {"--child", "startpeer"});
        });
    result.note = "process start to the first painted list of 20 rows from a server, beside a bare window "
                  "with a ListView";
    return {result};
}

}  // namespace

void addStartBench(std::vector<Bench>& benches) {
    benches.push_back(
        {"start", "process start to the first painted list, beside a bare Qt Quick window with a ListView", start});
}

}  // namespace ostrel
