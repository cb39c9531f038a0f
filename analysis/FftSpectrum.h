// Power spectrum in dB of one block, optionally resampled onto display points.
//
// Steps:
//   1. m with 2^m = n (at least 1: blocks of 2 points or fewer use 2 points);
//   2. window of n points (kind 1 Hamming, otherwise rectangular);
//   3. windowed block, or with preEmphasis > 0 the difference
//      samples[i+1] − preEmphasis·samples[i] windowed afterwards (sample n is read);
//   4. Fft of 2^m points;
//   5. bins k = 0 .. n/2 − 1: 10·log10(re² + im²), 0.0 dB when the power is
//      exactly 0; no normalisation of any kind; written to samples[0 .. n/2 − 1];
//   6. resample ≠ 0: natural spline through (k, dB[k]) and nPoints values at
//      bin positions j·step, step = (maxFrequencyHz / (rate·0.5))·(n·0.5) / nPoints;
//      the first point is 0 Hz; positions beyond the last bin extrapolate the
//      last segment. Written to samples[0 .. nPoints − 1].
// samples must hold max(n + 1, nPoints) values. Returns 0.
//
// FftSizeLabel: the text of entry `index` (0..7) of an FFT-size list, the bin
// width cut to whole Hz followed by the row's size label.
#pragma once

#include <string>

#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

int FftSpectrum(double* samples, int n, double preEmphasis, int windowKind, int resample, int nPoints,
                int maxFrequencyHz, double sampleRateHz, AnalysisWorkspace& ws = defaultWorkspace());

// FftSpectrum with resampling (resample ≠ 0) of four blocks, each result the
// same as FftSpectrum's; the splines of the four are solved side by side. The
// workspace ends as FftSpectrum of the last block leaves it.
int FftSpectra(double* const samples[4], int n, double preEmphasis, int windowKind, int nPoints, int maxFrequencyHz,
               double sampleRateHz, AnalysisWorkspace& ws);

// FFT size of list index 0..7: 32 .. 4096.
inline int FftSizeOfIndex(int index) { return 1 << (index + 5); }
std::string FftSizeLabel(int index, double sampleRateHz);

}  // namespace sonmetra
