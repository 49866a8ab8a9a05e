#pragma once

#include <functional>
#include <string>
#include <vector>

namespace ostrel {

/// One comparison: this system beside a peer, both in `unit`, each the best of several interleaved rounds.
struct BenchResult {
    std::string name;
    double ours = 0;
    double peer = 0;
    /// The largest ratio of `ours` to `peer` that holds.
    double goal = 0;
    std::string unit;
    /// What is compared.
    std::string note;
    /// Why the measurement itself failed; empty: it did not.
    std::string fault;
    double ratio() const { return peer > 0 ? ours / peer : 0; }
    bool holds() const { return fault.empty() && peer > 0 && ratio() <= goal; }
};

struct BenchSettings {
    /// How often each side is measured.
    int rounds = 5;
};

/// A benchmark that `ostrel-bench` offers under `name`.
struct Bench {
    std::string name;
    /// One line for --list.
    std::string what;
    std::function<std::vector<BenchResult>(const BenchSettings&)> run;
};

/// Every benchmark, in the order of --list.
std::vector<Bench> allBenches();

// Each adds the benchmarks of one source.
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

/// Runs `ours` and `peer` alternately, `rounds` times, and keeps the smallest measure of each. A negative measure is a
/// fault.
BenchResult interleaved(std::string name, double goal, std::string unit, int rounds,
                        const std::function<double()>& ours, const std::function<double()>& peer);
/// Seconds that `body` takes, by the steady clock.
double secondsOf(const std::function<void()>& body);

/// Runs one side of a benchmark that needs a process of its own; see `childMeasure`.
int runBenchChild(const std::string& what, int argc, char** argv);

}  // namespace ostrel
