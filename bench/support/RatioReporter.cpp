#include <benchmark/benchmark.h>

#include <cstdio>
#include <filesystem>
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

// Arguments such as --benchmark_filter=NAME go to the library.
extern "C" int wmain(int count, wchar_t** arguments) {
    std::vector<std::string> own{"bench", "--benchmark_enable_random_interleaving=true", "--benchmark_repetitions=11",
                                 "--benchmark_display_aggregates_only=true"};
    for (int i = 1; i < count; ++i)
        own.push_back(std::filesystem::path(arguments[i]).string());
    std::vector<char*> pointers;
    pointers.reserve(own.size());
    for (std::string& argument : own)
        pointers.push_back(argument.data());
    int left = static_cast<int>(pointers.size());
    benchmark::Initialize(&left, pointers.data());
    if (benchmark::ReportUnrecognizedArguments(left, pointers.data())) return 1;
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
