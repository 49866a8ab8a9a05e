#include "bench/support/Bench.h"
#include "bench/support/BenchChild.h"

#include <QDir>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>

#include <cmath>

namespace ostrel {

namespace {

/// 12 megapixels.
constexpr int pictureWidth = 4000, pictureHeight = 3000;
constexpr int pictures = 8;

/// A picture with as much detail as one from a camera: gradients, edges and grain.
QImage photograph(int number) {
    QImage image(pictureWidth, pictureHeight, QImage::Format_RGB32);
    unsigned grain = 12345u + static_cast<unsigned>(number);
    for (int y = 0; y < pictureHeight; ++y) {
        auto* line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < pictureWidth; ++x) {
            grain = grain * 1664525u + 1013904223u;
            const int noise = static_cast<int>(grain >> 28) - 8;
            const int wave = ((x * (number + 3)) ^ (y * 5)) >> 6 & 63;
            const auto part = [&](int value) { return std::min(255, std::max(0, value + noise)); };
            line[x] = qRgb(part(x * 160 / pictureWidth + wave), part(y * 160 / pictureHeight + 30),
                           part(90 + wave - number * 8));
        }
    }
    return image;
}

std::string makePictures(const QTemporaryDir& folder, int count) {
    for (int i = 0; i < count; ++i) {
        if (!photograph(i).save(folder.filePath(QString::number(i) + ".jpg"), "JPEG", 88)) return {};
    }
    return folder.path().toStdString();
}

BenchResult compared(const char* name, double goal, const char* unit, const BenchSettings& settings,
                     std::vector<std::string> ours, std::vector<std::string> peer, const char* note) {
    BenchResult result = interleaved(
        name, goal, unit, settings.rounds, [&] { return childMeasure(BenchRenderer::software, ours).value_or(-1); },
        [&] { return childMeasure(BenchRenderer::software, peer).value_or(-1); });
    result.note = note;
    return result;
}

std::vector<BenchResult> thumbnail(const BenchSettings& settings) {
    QTemporaryDir folder;
    const std::string path = makePictures(folder, 1) + "/0.jpg";
    return {compared("image.thumbnail", 0.5, "ms", settings, {"thumbnail", "ours", "time", path},
                     {"thumbnail", "peer", "time", path},
                     "12 megapixels of JPEG 320 points wide, beside QImageReader's full decode and smooth scale"),
            compared("image.thumbnail.memory", 0.2, "bytes", settings, {"thumbnail", "ours", "memory", path},
                     {"thumbnail", "peer", "memory", path}, "the same: memory while it is decoded")};
}

std::vector<BenchResult> firstFrame(const BenchSettings& settings) {
    const std::string clip = std::string(OSTREL_SAMPLE_CLIPS) + "/sea.mp4";
    return {compared("video.first", 1.3, "ms", settings, {"videofirst", "ours", clip}, {"videofirst", "peer", clip},
                     "from the tap to the first frame on screen, beside a bare QMediaPlayer with a QVideoSink "
                     "until its first frame")};
}

std::vector<BenchResult> playing(const BenchSettings& settings) {
    QTemporaryDir folder;
    const QString clip = folder.filePath("clip.mp4");
    const QStringList make{"-v",      "error",    "-f",       "lavfi",        "-i",   "testsrc2=s=1920x1080:r=30:d=8",
                           "-f",      "lavfi",    "-i",       "sine=440:d=8", "-c:v", "libx264",
                           "-preset", "veryfast", "-pix_fmt", "yuv420p",      "-c:a", "aac",
                           clip};
    BenchResult failed{.name = "video.play", .goal = 2, .unit = "s", .fault = "needs the ffmpeg command line"};
    if (QProcess::execute("ffmpeg", make) != 0) return {failed};
    BenchSettings once = settings;
    once.rounds = std::min(settings.rounds, 2);
    const std::string path = clip.toStdString();
    BenchResult time =
        compared("video.play", 2, "s", once, {"videoplay", "time", path}, {"videoplay", "decode", path},
                 "processor time of playing 8 seconds of 1080p30 shown 365 points wide, beside ffmpeg -f null");
    BenchResult dropped{.name = "video.play.dropped",
                        .ours = childMeasure(BenchRenderer::software, {"videoplay", "dropped", path}).value_or(-1),
                        .peer = 8 * 30,
                        .goal = 0.05,
                        .unit = "frames",
                        .note = "frames of them that were not shown, beside all"};
    if (dropped.ours < 0) dropped.fault = "it could not be played";
    return {time, dropped};
}

std::vector<BenchResult> detail(const BenchSettings&) {
    QTemporaryDir folder;
    const std::string path = makePictures(folder, pictures);
    const auto measured = [&](const char* what) {
        return childMeasure(BenchRenderer::software, {"detail", what, path}, 300).value_or(-1);
    };
    BenchResult memory{.name = "detail.images",
                       .ours = measured("memory"),
                       .peer = 250e6,
                       .goal = 1,
                       .unit = "bytes",
                       .note = "peak memory above the empty window, opening an article of 100 images of 12 "
                               "megapixels and scrolling through it, beside 250 MB"};
    BenchResult turn{.name = "detail.images.turn",
                     .ours = measured("turn"),
                     .peer = 16,
                     .goal = 1,
                     .unit = "ms",
                     .note = "the longest turn of the main loop in that time (processor time), beside 16 ms"};
    for (BenchResult* result : {&memory, &turn}) {
        if (result->ours < 0) result->fault = "the article could not be shown";
    }
    return {memory, turn};
}

}  // namespace

void addMediaBenches(std::vector<Bench>& benches) {
    benches.push_back({"detail.images", "an article of 100 images of 12 megapixels: memory and the main loop", detail});
    benches.push_back({"image.thumbnail", "a JPEG of 12 megapixels shown 320 points wide: time and memory", thumbnail});
    benches.push_back({"video.first", "the first frame of a local video, beside a bare QMediaPlayer", firstFrame});
    benches.push_back({"video.play", "1080p30: processor time beside a bare decode, and frames dropped", playing});
}

}  // namespace ostrel
