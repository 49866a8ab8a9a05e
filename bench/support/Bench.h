#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

/// One comparison: ours beside a peer, both in `unit`, the best of several interleaved rounds.
struct BenchResult {
    std::string name;
    double ours = 0;
    double peer = 0;
    double goal = 0;  ///< the largest ratio of ours to the peer that holds
    std::string unit;
    std::string note;   ///< what is compared
    std::string fault;  ///< not empty: the measurement itself failed
    double ratio() const { return peer > 0 ? ours / peer : 0; }
    bool holds() const { return fault.empty() && peer > 0 && ratio() <= goal; }
};

struct BenchSettings {
    int rounds = 5;
};

struct Bench {
    std::string name;
    std::string what;
    std::function<std::vector<BenchResult>(const BenchSettings&)> run;
};

/// Every benchmark, in the order they are listed.
std::vector<Bench> allBenches();

// One for each source.
void addDecodeBenches(std::vector<Bench>& benches);
void addTableBenches(std::vector<Bench>& benches);
void addAnswerBench(std::vector<Bench>& benches);
void addScrollBenches(std::vector<Bench>& benches);
void addStartBench(std::vector<Bench>& benches);
void addConvertBenches(std::vector<Bench>& benches);
void addMediaBenches(std::vector<Bench>& benches);
void addSaveBenches(std::vector<Bench>& benches);
void addUploadBench(std::vector<Bench>& benches);
void addEditorBenches(std::vector<Bench>& benches);

/// Runs `ours` and `peer` in turn, `rounds` times, and keeps the smallest of each. A negative measure is a fault.
BenchResult interleaved(std::string name, double goal, std::string unit, int rounds,
                        const std::function<double()>& ours, const std::function<double()>& peer);
/// Seconds that `body` takes, by the steady clock.
double secondsOf(const std::function<void()>& body);

/// Runs one side of a benchmark that needs a process of its own; see `childMeasure`.
int runBenchChild(const std::string& what, int argc, char** argv);

}  // namespace ostrel
