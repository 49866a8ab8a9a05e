#include "backends/qt/QtPlatform.h"
#include "bench/support/BenchChild.h"
#include "bench/support/FrameMeter.h"
#include "bench/support/ListBenchWindow.h"
#include "bench/support/SampleRecords.h"
#include "platform/foundation/runloop/NSNotificationCenter.h"

#include <QGuiApplication>
#include <QImage>

#include <chrono>
#include <cstdio>
#include <random>

namespace ostrel {

namespace {

constexpr int measuredFrames = 200, warmUpFrames = 30;
constexpr std::size_t articles = 10000;

int report(double value) {
    if (value < 0) return 1;
    std::printf("%.9g\n", value);
    return 0;
}

/// Moves the list to `offset` as a scroll would, and flushes the change to the backend.
void scrollTo(ListBenchWindow& bench, double offset) {
    bench.table().setContentOffset({0, offset});
    bench.root().flush();
}

/// Whether a scroll of one point moves every pixel of the content up by exactly one pixel.
bool movesExactlyOnePoint(ListBenchWindow& bench, double offset) {
    scrollTo(bench, offset);
    if (!bench.settle()) return false;
    // The table keeps the row at the upper edge in its place when the height of a row becomes known.
    const double from = bench.table().contentOffset().y;
    const QImage before = bench.window().grabWindow().convertToFormat(QImage::Format_RGB32);
    scrollTo(bench, from + 1);
    if (!bench.settle()) return false;
    if (bench.table().contentOffset().y != from + 1) return false;
    const QImage after = bench.window().grabWindow().convertToFormat(QImage::Format_RGB32);
    // Leaves out the scroll bar, which does not move with the content.
    const int width = std::min(before.width(), ListBenchWindow::width - 12);
    if (before.isNull() || before.size() != after.size()) return false;
    for (int y = 0; y + 1 < before.height(); ++y) {
        if (memcmp(after.constScanLine(y), before.constScanLine(y + 1), static_cast<std::size_t>(width) * 4) != 0) {
            std::fprintf(stderr, "at %.1f, line %d did not move by one point\n", from, y);
            return false;
        }
    }
    return true;
}

}  // namespace

int runScrollChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    ListBenchWindow bench(articles, false);
    if (argc < 4 || !bench.open()) return 1;
    const std::string step = argv[3];
    const double start = 5000;
    scrollTo(bench, start);
    if (!bench.settle()) return 1;
    double offset = bench.table().contentOffset().y;
    FrameMeter meter(bench.window());
    const double points = step == "still" ? 0 : std::stod(step);
    const auto frames = meter.frames(measuredFrames, warmUpFrames, [&](int frame) {
        // Starts from the offset that the list has, because the list corrects it when the height of a row becomes
        // known.
        offset = bench.table().contentOffset().y + (points > 0 ? points : frame % 2 ? -1 : 1);
        scrollTo(bench, offset);
    });
    return report(FrameMeter::median(frames) * 1000);
}

int runMillionChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 4) return 2;
    const std::size_t count = std::stoull(argv[3]);
    ListBenchWindow bench(count, false);
    if (!bench.open()) return 1;
    std::mt19937 random(20260304);
    const double end = bench.table().maximumOffsetY() - 2000;
    for (int i = 0; i < 6; ++i) {
        if (!movesExactlyOnePoint(bench, std::floor(end * (random() % 1000) / 1000.0))) return 1;
    }
    scrollTo(bench, std::floor(end * 0.7));
    if (!bench.settle()) return 1;
    FrameMeter meter(bench.window());
    const auto frames =
        meter.frames(measuredFrames, warmUpFrames, [&](int) { scrollTo(bench, bench.table().contentOffset().y + 40); });
    return report(FrameMeter::median(frames) * 1000);
}

int runInsertChild(int argc, char** argv) {
    QGuiApplication application(argc, argv);
    QtPlatform::install({});
    if (argc < 4) return 2;
    const std::size_t count = std::stoull(argv[3]);
    ListBenchWindow bench(count, true);
    if (!bench.open()) return 1;
    std::vector<double> seconds;
    for (std::size_t i = 0; i < 60; ++i) {
        const Value record = Value::parse(sampleRecord(count + i, 300));
        const auto begin = std::chrono::steady_clock::now();
        NSNotificationCenter::defaultCenter().postNotification(NOTIFICATION_KEY_NEW_ARTICLE, record);
        bench.root().flush();
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        bench.settle(1);
    }
    if (bench.list().articlesArray().size() != count + seconds.size()) return 1;
    return report(FrameMeter::median(seconds) * 1000);
}

}  // namespace ostrel
