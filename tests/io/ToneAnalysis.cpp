#include "ToneAnalysis.h"

#include <cmath>
#include <complex>
#include <numbers>
#include <utility>
#include <vector>

namespace sonmetra::test {
namespace {

void fft(std::vector<std::complex<double>>& x) {
    const std::size_t n = x.size();
    for (std::size_t i = 1, j = 0; i < n; ++i) {
        std::size_t bit = n >> 1;
        for (; j & bit; bit >>= 1) j ^= bit;
        j ^= bit;
        if (i < j) std::swap(x[i], x[j]);
    }
    for (std::size_t length = 2; length <= n; length <<= 1) {
        const double angle = -2.0 * std::numbers::pi / static_cast<double>(length);
        const std::complex<double> unit(std::cos(angle), std::sin(angle));
        for (std::size_t start = 0; start < n; start += length) {
            std::complex<double> w(1.0);
            for (std::size_t k = 0; k < length / 2; ++k) {
                const auto even = x[start + k];
                const auto odd = x[start + k + length / 2] * w;
                x[start + k] = even + odd;
                x[start + k + length / 2] = even - odd;
                w *= unit;
            }
        }
    }
}

}  // namespace

SpectrumPeak strongestPeak(const std::int16_t* samples, std::size_t count, double rateHz) {
    std::size_t n = 1;
    while (n * 2 <= count && n < 32768) n *= 2;
    if (n < 2) return {};
    std::vector<std::complex<double>> x(n);
    for (std::size_t i = 0; i < n; ++i) {
        const double window = 0.5 - 0.5 * std::cos(2.0 * std::numbers::pi * static_cast<double>(i) / (n - 1));
        x[i] = samples[i] * window;
    }
    fft(x);
    std::size_t best = 1;
    for (std::size_t k = 2; k < n / 2; ++k) {
        if (std::norm(x[k]) > std::norm(x[best])) best = k;
    }
    const double binWidth = rateHz / static_cast<double>(n);
    return SpectrumPeak{static_cast<double>(best) * binWidth, binWidth};
}

double rms(const std::int16_t* samples, std::size_t count) {
    if (count == 0) return 0.0;
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i) sum += static_cast<double>(samples[i]) * samples[i];
    return std::sqrt(sum / static_cast<double>(count));
}

}  // namespace sonmetra::test
