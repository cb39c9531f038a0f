// LPC of one block with its formants and its spectral envelope.
//
//   1. window of n points and pre-emphasis exactly as FftSpectrum (sample n is
//      read when preEmphasis > 0); the prepared block replaces samples[0..n−1];
//   2. LpcAnalysis of order p over the prepared block;
//   3. findFormants ≠ 0: FactorPolynomial of a working copy of a[0..p]
//      (zero-filled to index 400) with bandwidth limit 600 Hz; its record (or
//      null after a failure) becomes the workspace's most recent formant record;
//   4. skipSpectrum = 0: a[0..p] then zeros in a 256-point transform; for bins
//      0 .. 127 the value 10·log10(re² + im²), 0.0 when exactly 0. This is the
//      power of the inverse filter A: formants are its minima, and the caller
//      turns it over. With resample ≠ 0 a natural spline through the 128 values
//      gives nPoints values at bin positions j·step,
//      step = 128·(maxFrequencyHz / (rate·0.5)) / nPoints; otherwise the 128
//      values are written. Either way into samples[0 ..].
// samples must hold max(n + 1, 128, nPoints) values.
#pragma once

#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

inline constexpr double kFormantBandwidthLimitHz = 600.0;
inline constexpr int kEnvelopePoints = 256;

void LpcSpectrum(double* samples, int p, int n, double preEmphasis, int windowKind, int resample, int nPoints,
                 int maxFrequencyHz, double sampleRateHz, int findFormants, int skipSpectrum,
                 AnalysisWorkspace& ws = defaultWorkspace());

// The formant record of the most recent LpcSpectrum that asked for formants;
// null when that factoring failed or none ran yet.
inline const FormantRecord* LastFormants(AnalysisWorkspace& ws = defaultWorkspace()) { return ws.m_lastFormants; }

}  // namespace sonmetra
