#include "reader/application/ReaderEnvironment.h"

#include "article/OstrelArticle.h"
#include "backends/ffmpeg/FfmpegMediaBackend.h"
#include "platform/foundation/resources/Files.h"
#include "platform/media/MediaLibrary.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <memory>
#include <vector>

namespace ostrel {

namespace {

/// Another reader of the same user may still be uploading a younger clip.
constexpr int daysClipsAreKept = 2;

std::vector<std::string> pickerFolders(const std::string& chosen, QStandardPaths::StandardLocation system) {
    if (!chosen.empty()) return {chosen};
    std::vector<std::string> paths;
    for (const QString& path : QStandardPaths::standardLocations(system)) {
        // A system without such a folder names the home directory, which is not searched.
        if (QDir(path) != QDir::home()) paths.push_back(QFile::encodeName(path).toStdString());
    }
    return paths;
}

}  // namespace

void setQtEnvironment(const ReaderOptions& options) {
    if (options.scale > 0) qputenv("QT_SCALE_FACTOR", QByteArray::number(options.scale));
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    const bool offscreen = platform.startsWith("offscreen") || platform.startsWith("minimal");
    if (offscreen && qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND")) qputenv("QT_QUICK_BACKEND", "software");
}

bool installResources(std::string* error) {
    // The folder is beside the programs in a build and in an installation alike.
    const QString folder = QCoreApplication::applicationDirPath() + "/../share/ostrel-article";
    if (!QFileInfo(folder).isDir()) {
        if (error) *error = "The resources are missing: " + QDir::cleanPath(folder).toStdString() + ".";
        return false;
    }
    const std::string path = QDir(folder).canonicalPath().toStdString();
    NSBundle::setMainBundlePath(path);
    NSBundle::registerBundle(OstrelArticleBundleIdentifier, path);
    return true;
}

bool prepareHome(const std::string& folder, std::string* error) {
    const QDir documents(QString::fromStdString(folder) + "/Documents");
    if (!documents.mkpath(".")) {
        if (error) *error = "The folder " + documents.path().toStdString() + " cannot be made.";
        return false;
    }
    // The articles of these clips were posted, or given up, by now. error.html is the last unreadable answer.
    const QDateTime old = QDateTime::currentDateTime().addDays(-daysClipsAreKept);
    for (const QFileInfo& file : documents.entryInfoList(QDir::Files)) {
        if (file.lastModified() < old && file.fileName() != "error.html") QFile::remove(file.filePath());
    }
    setHomeDirectory(folder);
    return true;
}

void installMedia(const ReaderOptions& options) {
    MediaBackend::install(std::make_shared<FfmpegMediaBackend>());
    MediaLibrary::install(std::make_shared<const MediaLibrary>(
        MediaLibrary::Folders{.pictures = pickerFolders(options.picturesFolder, QStandardPaths::PicturesLocation),
                              .clips = pickerFolders(options.videosFolder, QStandardPaths::MoviesLocation)}));
}

}  // namespace ostrel
