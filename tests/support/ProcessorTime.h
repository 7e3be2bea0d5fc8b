#pragma once

#include <windows.h>

#include <cstdint>

/// The processor time that this thread has used, in milliseconds: whatever else the machine does leaves it alone.
inline double ProcessorTime() {
    FILETIME created{}, ended{}, kernel{}, user{};
    GetThreadTimes(GetCurrentThread(), &created, &ended, &kernel, &user);
    const auto number = [](const FILETIME& time) {
        return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
    };
    return static_cast<double>(number(kernel) + number(user)) / 10'000;
}
