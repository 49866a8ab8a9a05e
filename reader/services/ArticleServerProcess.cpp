#include "reader/services/ArticleServerProcess.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QUrl>

namespace ostrel {

ArticleServerProcess::~ArticleServerProcess() { stop(); }

bool ArticleServerProcess::start(const std::string& dataFolder, std::string* error) {
    dataFolder_ = dataFolder;
    return launch(0, error);
}

bool ArticleServerProcess::restartOnSamePort(std::string* error) {
    return launch(QUrl(QString::fromStdString(address_)).port(), error);
}

bool ArticleServerProcess::launch(int port, std::string* error) {
    const QString program = QCoreApplication::applicationDirPath() + "/ostrel-article-server";
    process_.setProcessChannelMode(QProcess::SeparateChannels);
    const QString samples = QCoreApplication::applicationDirPath() + "/../share/ostrel-article/samples";
    process_.start(program, {"--data", QString::fromStdString(dataFolder_), "--port", QString::number(port), "--sample",
                             samples, "--exit-with-parent"});
    if (!process_.waitForStarted(5000)) {
        if (error) *error = "The article server \"" + program.toStdString() + "\" cannot be started.";
        return false;
    }
    QElapsedTimer since;
    since.start();
    accounts_.clear();
    address_.clear();
    // The server prints the lines of both accounts after the line of the address.
    while (accounts_.size() < 2 && since.elapsed() < startTimeout) {
        while (process_.canReadLine()) {
            const QString line = QString::fromUtf8(process_.readLine()).trimmed();
            if (const auto at = line.indexOf("listening on "); at >= 0) address_ = line.mid(at + 13).toStdString();
            if (line.startsWith("sample account: ")) {
                const QStringList parts = line.mid(16).split(" / ");
                if (parts.size() == 2) accounts_.push_back({parts[0].toStdString(), parts[1].toStdString()});
            }
        }
        if (accounts_.size() >= 2) break;
        if (process_.state() == QProcess::NotRunning) break;
        process_.waitForReadyRead(200);
    }
    if (!address_.empty() && process_.state() == QProcess::Running) return true;
    const std::string said = QString::fromUtf8(process_.readAllStandardError()).trimmed().toStdString();
    if (error) *error = said.empty() ? "The article server did not start." : said;
    stop();
    return false;
}

void ArticleServerProcess::stop() {
    if (process_.state() == QProcess::NotRunning) return;
    process_.terminate();
    if (!process_.waitForFinished(5000)) {
        process_.kill();
        process_.waitForFinished(2000);
    }
}

}  // namespace ostrel
