#include "bench/support/Bench.h"

#include <algorithm>
#include <chrono>
#include <limits>

namespace ostrel {

std::vector<Bench> allBenches() {
    std::vector<Bench> benches;
    addDecodeBenches(benches);
    addAnswerBench(benches);
    addScrollBenches(benches);
    addTableBenches(benches);
    addStartBench(benches);
    addConvertBenches(benches);
    addMediaBenches(benches);
    addSaveBenches(benches);
    addUploadBench(benches);
    addEditorBenches(benches);
    return benches;
}

double secondsOf(const std::function<void()>& body) {
    const auto begin = std::chrono::steady_clock::now();
    body();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

BenchResult interleaved(std::string name, double goal, std::string unit, int rounds,
                        const std::function<double()>& ours, const std::function<double()>& peer) {
    BenchResult result{.name = std::move(name), .goal = goal, .unit = std::move(unit)};
    result.ours = result.peer = std::numeric_limits<double>::max();
    for (int round = 0; round < rounds; ++round) {
        // The side that runs second finds warmer caches, so the two sides change their order every round.
        const double first = round % 2 ? peer() : ours();
        const double second = round % 2 ? ours() : peer();
        const double mine = round % 2 ? second : first, others = round % 2 ? first : second;
        if (mine < 0 || others < 0) {
            result.fault = mine < 0 ? "our side could not be measured" : "the peer could not be measured";
            result.ours = result.peer = 0;
            return result;
        }
        result.ours = std::min(result.ours, mine);
        result.peer = std::min(result.peer, others);
    }
    return result;
}

}  // namespace ostrel
