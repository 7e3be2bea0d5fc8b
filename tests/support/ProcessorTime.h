#pragma once

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <vector>

/// The processor time that this thread has used, in milliseconds: what other programs here do leaves it alone.
inline double ProcessorTime() {
    FILETIME created{}, ended{}, kernel{}, user{};
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    const auto number = [](const FILETIME& time) {
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    return static_cast<double>(number(kernel) + number(user)) / 10'000;
}

/// How many times as long as usual this machine takes at present, at least 1. A machine that others share counts their
/// time as its programs': limits in milliseconds, which are set for a machine left alone, are to be widened by this.
inline double Slowness() {
    constexpr int kNumbers = 400'000;
    constexpr double kUsual = 60;  // milliseconds at most for the work below in a debug build
    std::vector<int> numbers(kNumbers);
    std::iota(numbers.begin(), numbers.end(), 0);
    std::shuffle(numbers.begin(), numbers.end(), std::mt19937(1));
    const double start = ProcessorTime();
    std::sort(numbers.begin(), numbers.end());
    return std::max(1.0, (ProcessorTime() - start) / kUsual);
}
