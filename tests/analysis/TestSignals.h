// Signals shared by the analysis tests.
#pragma once

#include <cmath>
#include <cstdint>
#include <numbers>
#include <vector>

namespace sonmetra::test {

// The block of make_reference.py's test_signal.
inline std::vector<double> referenceSignal(int n) {
    std::vector<double> x(static_cast<std::size_t>(n) + 8, 0.0);
    for (int i = 0; i < n; ++i)
        x[static_cast<std::size_t>(i)] = 1000.0 * std::sin(2 * std::numbers::pi * 0.0371 * i) +
                                         500.0 * std::sin(2 * std::numbers::pi * 0.1234 * i + 0.3) +
                                         200.0 * (((i * 7919) % 101) - 50) / 50.0;
    return x;
}

// Deterministic pseudo-random values in [-1, 1).
inline std::vector<double> noise(int n, std::uint32_t seed) {
    std::vector<double> x(static_cast<std::size_t>(n));
    for (auto& v : x) {
        seed = seed * 1664525u + 1013904223u;
        v = (seed >> 8) / 8388608.0 - 1.0;
    }
    return x;
}

}  // namespace sonmetra::test
