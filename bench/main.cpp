#include "bench/support/Bench.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <cstdio>
#include <iostream>

using namespace ostrel;

namespace {

bool isAskedFor(const Bench& bench, const std::vector<std::string>& names) {
    if (names.empty()) return true;
    for (const auto& name : names) {
        if (bench.name == name || bench.name.starts_with(name + ".")) return true;
    }
    return false;
}

void print(const BenchResult& result, bool json) {
    if (json) {
        nlohmann::json line{{"bench", result.name},   {"ours", result.ours},     {"peer", result.peer},
                            {"unit", result.unit},    {"ratio", result.ratio()}, {"goal", result.goal},
                            {"holds", result.holds()}};
        if (!result.fault.empty()) line["fault"] = result.fault;
        std::cout << line.dump() << std::endl;
        return;
    }
    if (!result.fault.empty()) {
        std::printf("%-18s not measured: %s\n", result.name.c_str(), result.fault.c_str());
    } else {
        std::printf("%-18s ours %11.4g  peer %11.4g %-6s ratio %6.3f  goal %5.3f  %s\n", result.name.c_str(),
                    result.ours, result.peer, result.unit.c_str(), result.ratio(), result.goal,
                    result.holds() ? "holds" : "DOES NOT HOLD");
    }
    std::fflush(stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc >= 3 && std::string(argv[1]) == "--child") return runBenchChild(argv[2], argc, argv);
    CLI::App app{"Measures what things cost, each beside a peer in the same run.", "ostrel-bench"};
    bool list = false, json = false;
    BenchSettings settings;
    std::vector<std::string> names;
    app.add_flag("--list", list, "Name the benches");
    app.add_flag("--json", json, "One object a line: bench, ours, peer, unit, ratio, goal, holds");
    app.add_option("--rounds", settings.rounds, "Interleaved rounds, of which the best counts")
        ->check(CLI::Range(1, 1000))
        ->capture_default_str();
    app.add_option("names", names, "Benches to run, or the first part of their names; all when absent");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        std::cout << app.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        std::cerr << "ostrel-bench: " << error.what() << ". See --help.\n";
        return 2;
    }
    bool ran = false, held = true;
    for (const Bench& bench : allBenches()) {
        if (list) {
            std::printf("%-18s %s\n", bench.name.c_str(), bench.what.c_str());
            continue;
        }
        if (!isAskedFor(bench, names)) continue;
        ran = true;
        for (const BenchResult& result : bench.run(settings)) {
            print(result, json);
            held = held && result.holds();
        }
    }
    if (list) return 0;
    if (!ran) {
        std::cerr << "ostrel-bench: no bench has that name. See --list.\n";
        return 2;
    }
    return held ? 0 : 1;
}
