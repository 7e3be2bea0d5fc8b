#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <vector>

inline double Median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/// Runs two pieces of work in turn, so that both meet the machine in the same state, and reports the medians of each in
/// milliseconds and of the ratio of each pair.
template <class Ours, class Bare>
void RunPaired(benchmark::State& state, Ours ours, Bare bare) {
    const auto milliseconds = [](auto& work) {
        const auto start = std::chrono::steady_clock::now();
        work();
        return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start).count();
    };
    milliseconds(bare);  // what is loaded once
    milliseconds(ours);
    std::vector<double> oursTimes;
    std::vector<double> bareTimes;
    std::vector<double> ratios;
    for (auto _ : state) {
        bareTimes.push_back(milliseconds(bare));
        oursTimes.push_back(milliseconds(ours));
        ratios.push_back(oursTimes.back() / bareTimes.back());
    }
    state.counters["ours_ms"] = Median(oursTimes);
    state.counters["bare_ms"] = Median(bareTimes);
    state.counters["ratio"] = Median(ratios);
}
