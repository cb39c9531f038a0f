// Analysis windows of the FFT and LPC analyses.
//
// Hamming: w[i] = 0.54 − 0.46·cos(2π·i / n), i = 0 .. n−1. The denominator is
// n, not n − 1 (the periodic form); every spectrum of the system depends on it.
// Rectangular: all ones. Window kind 1 selects Hamming, any other value
// rectangular.
#pragma once

namespace sonmetra {

inline constexpr int kHammingWindow = 1;
inline constexpr int kRectangularWindow = 0;

void HammingWindow(double* w, int n);
void RectangularWindow(double* w, int n);
void BuildWindow(double* w, int n, int kind);

// The windowed (and optionally pre-emphasised) block of n points:
// out[i] = samples[i]·w[i] when preEmphasis ≤ 0, otherwise
// out[i] = (samples[i+1] − preEmphasis·samples[i])·w[i], which reads sample n.
// out may be samples itself.
void PrepareBlock(const double* samples, double* out, int n, double preEmphasis, const double* w);

}  // namespace sonmetra
