// Spectral checks for the sound tests: the frequency of the strongest
// spectral peak and the RMS level of a stretch of samples.
#pragma once

#include <cstddef>
#include <cstdint>

namespace sonmetra::test {

struct SpectrumPeak {
    double frequencyHz = 0.0;
    double binWidthHz = 0.0;
};

// Hann-windowed FFT over the largest power of two (at most 32768) that fits
// in `count` samples; the DC bin is ignored.
SpectrumPeak strongestPeak(const std::int16_t* samples, std::size_t count, double rateHz);
double rms(const std::int16_t* samples, std::size_t count);

}  // namespace sonmetra::test
