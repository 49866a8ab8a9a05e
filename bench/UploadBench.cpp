#include "bench/support/Bench.h"
#include "bench/support/BenchArticleServer.h"
#include "bench/support/BenchChild.h"

#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtEndian>

#include <algorithm>
#include <cmath>

namespace ostrel {

namespace {

constexpr qint64 megabyte = 1'000'000;
constexpr int longestSeconds = 300;

/// Writes a clip of `bytes` bytes: a short clip followed by a box of free space (ISO/IEC 14496-12, 8.1.2).
bool makeClip(const QString& path, qint64 bytes) {
    QFile::remove(path);
    if (!QFile::copy(QString(OSTREL_SAMPLE_CLIPS) + "/sea.mp4", path)) return false;
    QFile file(path);
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
    if (!file.open(QIODevice::ReadWrite)) return false;
    const qint64 begin = file.size();
    uchar head[16] = {0, 0, 0, 1, 'f', 'r', 'e', 'e'};
    qToBigEndian(static_cast<quint64>(bytes - begin), head + 8);
    file.seek(begin);
    return file.write(reinterpret_cast<const char*>(head), sizeof head) == sizeof head && file.resize(bytes);
}

QString said(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(longestSeconds * 1000)) process.kill();
    return QString::fromUtf8(process.readAllStandardOutput());
}

/// Uploads with the curl command line, signed in to an account of its own.
class CurlUploader final {
public:
    explicit CurlUploader(QString address) : address_(std::move(address)) {
        said("curl", {"-s", "-c", jar(), "-d", "name=curl&password=long enough", address_ + "account/sign_up"});
    }

    double seconds(const QString& clip, const QString& still) {
        const QString made =
            said("curl", {"-s", "-b", jar(), "-d", "title=curl&text=", address_ + "article/update_article_json.html"});
        const auto id = QRegularExpression("\"id\":(\\d+)").match(made).captured(1);
        if (id.isEmpty()) return -1;
        const QString report = said("curl", {"-s", "-o", "/dev/null", "-w", "%{http_code} %{time_total}", "-b", jar(),
                                             "-F", "thumbnail.jpg=@" + still + ";type=image/jpeg", "-F",
                                             "video.mp4=@" + clip + ";type=video/mp4", "-F", "duration=4",
                                             address_ + "article/video_update?value=0&article_id=" + id});
        said("curl", {"-s", "-b", jar(), address_ + "article/remove?id=" + id});
        return report.startsWith("200 ") ? report.mid(4).toDouble() : -1;
    }

private:
    QString jar() const { return folder_.filePath("cookies"); }

    QTemporaryDir folder_;
    const QString address_;
};

std::vector<BenchResult> upload(const BenchSettings& settings) {
    QTemporaryDir folder;
    BenchArticleServer server;
    const QString clip = folder.filePath("clip.mp4"), still = QString(OSTREL_SAMPLE_CLIPS) + "/sea.jpg";
    const auto measured = [&](const char* what, qint64 bytes) {
        if (!makeClip(clip, bytes)) return -1.0;
        return childMeasure(BenchRenderer::software,
                            {"upload", what, server.address().toStdString(), clip.toStdString(), still.toStdString()},
                            longestSeconds)
            .value_or(-1);
    };
    CurlUploader curl(server.address());
    BenchResult time = interleaved(
        "save.upload", 1, "s", std::min(settings.rounds, 3), [&] { return measured("time", 1000 * megabyte); },
        [&] {
            if (!makeClip(clip, 1000 * megabyte)) return -1.0;
            return curl.seconds(clip, still);
        });
    time.note = "a clip of 1 GB to the article server, beside curl -F of the same file";
    BenchResult memory{.name = "save.upload.memory",
                       .peer = 1024 * 1024,
                       .goal = 1,
                       .unit = "bytes",
                       .note = "the most memory resident while 4 GB are uploaded, less that of 100 MB, beside 1 MiB"};
    const double small = measured("memory", 100 * megabyte), large = measured("memory", 4000 * megabyte);
    if (small < 0 || large < 0) memory.fault = "the clip could not be uploaded";
    memory.ours = std::max(0.0, large - small);
    return {time, memory};
}

}  // namespace

void addUploadBench(std::vector<Bench>& benches) {
    benches.push_back({"save.upload", "a clip of 1 GB beside curl -F, and the memory it takes", upload});
}

}  // namespace ostrel
