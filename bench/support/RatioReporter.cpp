#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

// Runs every benchmark in several interleaved repetitions. A benchmark "X/ours/N" that has a partner "X/bare/N" is
// reported as the ratio of the two medians, which holds when the machine's speed drifts.

namespace {

constexpr char kOurs[] = "/ours";
constexpr char kBare[] = "/bare";

class RatioReporter : public benchmark::ConsoleReporter {
public:
    RatioReporter() : ConsoleReporter(OO_Tabular) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.aggregate_name == "median") medians_[run.run_name.str()] = run.GetAdjustedRealTime();
        }
    }

    void Finalize() override {
        ConsoleReporter::Finalize();
        for (const auto& [name, ours] : medians_) {
            const std::size_t at = name.find(kOurs);
            if (at == std::string::npos) continue;
            const auto bare = medians_.find(std::string(name).replace(at, sizeof kOurs - 1, kBare));
            if (bare == medians_.end()) continue;
            std::printf("ratio %-40s %.2f\n", std::string(name).erase(at, sizeof kOurs - 1).c_str(),
                        ours / bare->second);
        }
    }

private:
    std::map<std::string, double> medians_;
};

}  // namespace

extern "C" int wmain() {
    char program[] = "bench";
    char interleave[] = "--benchmark_enable_random_interleaving=true";
    char repetitions[] = "--benchmark_repetitions=11";
    char aggregates[] = "--benchmark_display_aggregates_only=true";
    char* arguments[] = {program, interleave, repetitions, aggregates, nullptr};
    int count = 4;
    benchmark::Initialize(&count, arguments);
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
