#include "bench/support/Bench.h"
#include "bench/support/BenchChild.h"

namespace ostrel {

namespace {

/// Milliseconds: one frame of a display of 60 Hz.
constexpr double longestTurn = 16;

double editor(const std::vector<std::string>& arguments) {
    std::vector<std::string> all{"editor"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return childMeasure(BenchRenderer::software, all, 300).value_or(-1);
}

std::vector<BenchResult> opening(const BenchSettings& settings) {
    BenchResult result = interleaved(
        "editor.open", 3, "ms", settings.rounds,
        [] {
            return editor({"open", "500"});
        },
        [] {
            return editor({"open", "5"});
        });
    result.note = "from making the editor to painted, 500 images beside 5";
    return {result};
}

std::vector<BenchResult> turns(const char* what, const char* note) {
    BenchResult result{.name = std::string("editor.") + what,
                       .ours = editor({what, "500"}),
                       .peer = longestTurn,
                       .goal = 1,
                       .unit = "ms",
                       .note = note};
    if (result.ours < 0) result.fault = "the editor could not be shown";
    return {result};
}

std::vector<BenchResult> typing(const BenchSettings& settings) {
    BenchResult result = interleaved(
        "editor.type", 1.5, "ms", settings.rounds,
        [] {
            return childMeasure(BenchRenderer::software, {"typing", "ours"}).value_or(-1);
        },
        [] {
            return childMeasure(BenchRenderer::software, {"typing", "peer"}).value_or(-1);
        });
    result.note = "a keystroke to painted in a text of 100,000 characters, beside a bare TextArea";
    return {result};
}

}  // namespace

void addEditorBenches(std::vector<Bench>& benches) {
    benches.push_back({"editor.open", "the editor of an article of 500 images, beside one of 5", opening});
    benches.push_back({"editor.scroll", "the longest turn of the main loop while 500 tiles scroll by", [](const auto&) {
                           return turns("scroll",
                                        "40 points a turn through 500 tiles: the longest turn (processor time)");
                       }});
    benches.push_back(
        {"editor.drag", "the longest turn while one of 500 tiles is dragged over all others", [](const auto&) {
             return turns("drag", "40 points a turn under the finger: the longest turn (processor time)");
         }});
    benches.push_back({"editor.type", "a keystroke in 100,000 characters, beside a bare TextArea", typing});
}

}  // namespace ostrel
