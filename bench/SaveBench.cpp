#include "article/server/ArticleRequest.h"
#include "bench/support/Bench.h"
#include "bench/support/BenchArticleServer.h"
#include "bench/support/BenchChild.h"
#include "platform/graphics/UIImage.h"

#include <QFile>
#include <QImage>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>

namespace ostrel {

namespace {

constexpr int pictures = 100;
constexpr int pictureWidth = 1600, pictureHeight = 1200;
/// The time between two looks of a save at its outstanding requests, the longest save of an article without media, and
/// the longest turn of the main loop, in seconds.
constexpr double poll = 0.5, longestSave = 0.9, longestTurn = 0.016;

/// A picture with gradients, edges and grain.
bool makePicture(int number, const QString& path) {
    QImage image(pictureWidth, pictureHeight, QImage::Format_RGB32);
    unsigned grain = 12345u + static_cast<unsigned>(number);
    for (int y = 0; y < pictureHeight; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < pictureWidth; ++x) {
            grain = grain * 1664525u + 1013904223u;
            const int noise = static_cast<int>(grain >> 28) - 8;
            const int wave = ((x * (number % 7 + 3)) ^ (y * 5)) >> 5 & 63;
            const auto part = [&](int value) { return std::clamp(value + noise, 0, 255); };
            line[x] =
                qRgb(part(x * 160 / pictureWidth + wave), part(y * 160 / pictureHeight + 30), part(90 + wave - number));
        }
    }
    return image.save(path, "JPEG", 90);
}

/// Writes the pictures that the editor is given as "<number>.jpg", and the same JPEG bodies that the editor uploads of
/// them as "<number>.body.jpg".
bool makePictures(const QString& folder) {
    for (int i = 0; i < pictures; ++i) {
        const QString path = folder + "/" + QString::number(i);
        if (!makePicture(i, path + ".jpg")) return false;
        const auto image = UIImage::imageWithData(Data::mapFile((path + ".jpg").toStdString()));
        const Data body = image ? UIImageJPEGRepresentation(*image, uploadedJpegQuality) : Data();
        QFile file(path + ".body.jpg");
        const auto size = static_cast<qint64>(body.size());
        if (body.isNull() || !file.open(QFile::WriteOnly) ||
            file.write(reinterpret_cast<const char*>(body.bytes()), size) != size)
            return false;
    }
    return true;
}

QByteArray curl(const QStringList& arguments) {
    QProcess process;
    process.start("curl", QStringList{"-sS", "--fail"} + arguments);
    if (!process.waitForFinished(300'000) || process.exitCode() != 0) return {};
    return process.readAllStandardOutput();
}

/// Posts the same article with the curl command line, which uploads the pictures with `--parallel`. The seconds that
/// the pictures took; negative: curl failed.
double curlPictures(const QString& address, const QString& folder) {
    static int users = 0;
    const QString jar = folder + "/jar";
    QFile::remove(jar);
    const QString name = "name=Curl " + QString::number(++users);
    if (curl({"-c", jar, "--data-urlencode", name, "--data-urlencode", "password=long enough",
              address + "account/sign_up"})
            .isEmpty())
        return -1;
    const QByteArray created = curl({"-b", jar, "--data-urlencode", "title=A title", "--data-urlencode", "text=A text.",
                                     address + "article/update_article_json.html"});
    const qint64 article = QJsonDocument::fromJson(created)["id"].toInteger(-1);
    if (article < 0) return -1;
    QFile config(folder + "/config");
    if (!config.open(QFile::WriteOnly)) return -1;
    for (int i = 0; i < pictures; ++i) {
        const QString number = QString::number(i);
        const QString url =
            address + "article/image_update?article_id=" + QString::number(article) + "&value=" + number;
        config.write(((i ? "next\n" : "") + QStringLiteral("fail\nurl = \"%1\"\ncookie = \"%2\"\n"
                                                           "form = \"image.jpg=@%3/%4.body.jpg;type=image/jpeg\"\n"
                                                           "output = \"/dev/null\"\n")
                                                .arg(url, jar, folder, number))
                         .toUtf8());
    }
    config.close();
    QProcess process;
    return secondsOf([&] {
               process.start("curl", {"-sS", "--parallel", "--parallel-max", "8", "-K", config.fileName()});
               process.waitForFinished(300'000);
           }) *
           (process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0 ? 1 : -1);
}

std::vector<BenchResult> savePictures(const BenchSettings& settings) {
    const BenchArticleServer server;
    const QTemporaryDir folder;
    BenchResult time{.name = "save.pictures",
                     .goal = 1.1,
                     .unit = "s",
                     .fault = "the server did not start, or the pictures could not be made"};
    if (server.address().isEmpty() || !makePictures(folder.path())) return {time};
    const auto save = [&](const char* what) {
        return childMeasure(
            BenchRenderer::software,
            {"save", what, server.address().toStdString(), folder.path().toStdString(), std::to_string(pictures)}, 400);
    };
    time = interleaved(
        "save.pictures", 1.1, "s", std::min(settings.rounds, 3), [&] { return save("time").value_or(poll - 1) - poll; },
        [&] { return curlPictures(server.address(), folder.path()); });
    time.note = "100 new pictures of 1600 by 1200, from the click to the article read back, less the poll of 0.5 s, "
                "beside curl --parallel with the same bodies ready";
    const auto turn = save("turn");
    return {time,
            {.name = "save.pictures.turn",
             .ours = turn.value_or(-1) * 1000,
             .peer = longestTurn * 1000,
             .goal = 1,
             .unit = "ms",
             .note = "the longest turn of the main loop in that time (processor time), beside 16 ms",
             .fault = turn ? "" : "the article could not be saved"}};
}

std::vector<BenchResult> saveEmpty(const BenchSettings& settings) {
    const BenchArticleServer server;
    BenchResult result{
        .name = "save.empty", .ours = -1, .peer = longestSave, .goal = 1, .unit = "s", .fault = "not saved"};
    result.note = "an article without media, from the click on POST to the first frame that shows its row, beside "
                  "0.9 s of which 0.7 are the poll and the closing delay";
    for (int round = 0; round < settings.rounds && !server.address().isEmpty(); ++round) {
        const auto measured = childMeasure(BenchRenderer::software, {"save", "empty", server.address().toStdString()});
        if (!measured) continue;
        result.ours = result.ours < 0 ? *measured : std::min(result.ours, *measured);
        result.fault.clear();
    }
    return {result};
}

}  // namespace

void addSaveBenches(std::vector<Bench>& benches) {
    benches.push_back({"save.pictures", "saving 100 pictures, beside curl --parallel", savePictures});
    benches.push_back({"save.empty", "from POST to the row on screen, without media", saveEmpty});
}

}  // namespace ostrel
