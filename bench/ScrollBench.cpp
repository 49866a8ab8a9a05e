#include "bench/support/Bench.h"
#include "bench/support/BenchChild.h"

#include <cstdio>

namespace ostrel {

namespace {

struct Case {
    const char* name;
    /// Points a frame; "still": one point down and one up in turn, so that no new row appears.
    const char* step;
    double goal;
    const char* what;
};

constexpr Case cases[] = {
    {"scroll.40", "40", 1.0 / 3, "a whole frame, 40 points a frame through 10,000 articles, beside ListView"},
    {"scroll.400", "400", 1.0 / 3, "the main thread's frame, 400 points a frame, beside ListView"},
    {"scroll.still", "still", 1.0 / 5, "a frame that brings no new row, beside ListView"},
};

BenchResult scroll(const Case& wanted, BenchRenderer renderer, const BenchSettings& settings) {
    const std::string name = std::string(wanted.name) + (renderer == BenchRenderer::openGl ? ".gl" : "");
    BenchResult result = interleaved(
        name, wanted.goal, "ms", settings.rounds,
        [&] {
            return childMeasure(renderer, {"scroll", wanted.step}).value_or(-1);
        },
        [&] {
            return childMeasure(renderer, {"listview", wanted.step}).value_or(-1);
        });
    result.note = wanted.what;
    return result;
}

}  // namespace

void addScrollBenches(std::vector<Bench>& benches) {
    for (const Case& wanted : cases) {
        for (const BenchRenderer renderer : {BenchRenderer::software, BenchRenderer::openGl}) {
            const bool gl = renderer == BenchRenderer::openGl;
            benches.push_back({std::string(wanted.name) + (gl ? ".gl" : ""),
                               std::string(wanted.what) + (gl ? " (llvmpipe)" : " (software renderer)"),
                               [&wanted, renderer](const BenchSettings& settings) {
                                   return std::vector{scroll(wanted, renderer, settings)};
                               }});
        }
    }
}

}  // namespace ostrel
