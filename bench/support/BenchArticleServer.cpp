#include "bench/support/BenchArticleServer.h"

#include <QElapsedTimer>
#include <QFileInfo>

namespace ostrel {

namespace {
/// Milliseconds; the first start on a folder writes the sample articles.
constexpr int longestStart = 60000;
}  // namespace

QString besideThis(const char* program) {
    return QFileInfo(QFileInfo("/proc/self/exe").symLinkTarget()).path() + "/" + program;
}

BenchArticleServer::BenchArticleServer(const QStringList& arguments) {
    process_.setProcessChannelMode(QProcess::SeparateChannels);
    process_.start(besideThis("ostrel-article-server"),
                   QStringList{"--data", data_.path(), "--port", "0", "--exit-with-parent"} + arguments);
    QElapsedTimer since;
    since.start();
    while (address_.isEmpty() && since.elapsed() < longestStart && process_.state() != QProcess::NotRunning) {
        process_.waitForReadyRead(200);
        while (process_.canReadLine()) {
            const QString line = QString::fromUtf8(process_.readLine()).trimmed();
            if (const auto at = line.indexOf("listening on "); at >= 0) address_ = line.mid(at + 13);
        }
    }
}

BenchArticleServer::~BenchArticleServer() {
    process_.terminate();
    if (!process_.waitForFinished(5000)) process_.kill();
}

}  // namespace ostrel
