#include "bench/support/Bench.h"
#include "bench/support/BenchChild.h"

namespace ostrel {

namespace {

std::vector<BenchResult> millionBesideTenThousand(const char* child, const char* name, double goal, const char* note,
                                                  const BenchSettings& settings) {
    const auto measure = [&](const char* count) {
        return childMeasure(BenchRenderer::software, {child, count}, 240).value_or(-1);
    };
    BenchResult result = interleaved(
        name, goal, "ms", settings.rounds, [&] { return measure("1000000"); }, [&] { return measure("10000"); });
    result.note = note;
    return {result};
}

}  // namespace

void addTableBenches(std::vector<Bench>& benches) {
    benches.push_back({"scroll.million",
                       "a frame among 1,000,000 articles beside one among 10,000; fails unless a scroll of one point "
                       "moves every pixel exactly one point",
                       [](const BenchSettings& settings) {
                           return millionBesideTenThousand("million", "scroll.million", 1.1, "frame cost", settings);
                       }});
    benches.push_back({"insert.top", "inserting an article first among 1,000,000 beside among 10,000",
                       [](const BenchSettings& settings) {
                           return millionBesideTenThousand("insert", "insert.top", 1.2, "insert and flush", settings);
                       }});
}

}  // namespace ostrel
