#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace ochost {

/// Marsaglia's xorshift: the same numbers from every compiler and run.
class Random {
public:
    /// Evenly from `from` up to and including `to`.
    int Between(int from, int to) {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return from + static_cast<int>(state_ % static_cast<std::uint64_t>(to - from + 1));
    }

    template <class T>
    void Shuffle(std::vector<T>& items) {
        for (std::size_t left = items.size(); left > 1; --left) {
            std::swap(items[left - 1], items[static_cast<std::size_t>(Between(0, static_cast<int>(left) - 1))]);
        }
    }

private:
    std::uint64_t state_ = 0x9E3779B97F4A7C15;
};

}  // namespace ochost
