// The computation of the FFT/LPC spectrum window: the spectrum at the cursor
// or the halving running mean of spectra over a selection, and the five
// formants and bandwidths of an LPC block.
//
//   1. step = average step ms · rate · 0.001 + 0.5 samples, not cut;
//   2. frame k at pos = start + k·step: N samples as doubles from cut(pos) when
//      N + pos ≤ count, otherwise the indices cut(pos) … while j < cut(count − pos)
//      (a position mixed with a remaining length); the rest of the work block
//      keeps what earlier frames left there. FftSpectrum of a copy of it; with
//      an applied window of L < N points only the first L points of the copy
//      are windowed (a window of L points) and the rest is zero, so that the
//      transform of N points interpolates the spectrum of the shorter stretch;
//   3. average = spectrum for the first frame, then (spectrum + average)·0.5:
//      the last frame weighs 1/2, the one before 1/4, … (deliberate);
//   4. stop once N + pos ≥ end; the first frame is always computed, so at the
//      cursor (start = end) exactly one frame of N samples is analysed;
//   5. LPC block of cut(rate · 0.001 · order) samples from the analysis start,
//      Hamming, no pre-emphasis, formants found: F1..F5 and BW1..BW5 are the
//      first five formants and bandwidths plus 0.5 (so that a later conversion
//      to a whole number rounds; missing ones read 0.5); they keep their
//      previous values when the factoring fails.
// The progress callback runs after every frame and may cancel.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

struct SpectrumWindowInput {
    const std::int16_t* samples = nullptr;
    double sampleCount = 0.0;
    double startSample = 0.0;
    double endSample = 0.0;
    double rateHz = 0.0;
};

// What the window shows; F and BW persist between computations of one window.
struct SpectrumWindowState {
    std::vector<double> spectrum;  // N/2 bins, or nPoints when resampled
    std::vector<double> envelope;  // LpcSpectrum values at the same points
    std::array<double, 5> formantHz{};
    std::array<double, 5> bandwidthHz{};
    bool formantsFound = false;  // the last factoring succeeded
    int frames = 0;
};

struct SpectrumWindowOptions {
    double preEmphasis = 0.0;
    int windowKind = 1;
    int resample = 0;  // 0: the N/2 bins as they are
    int nPoints = 0;
    int maxFrequencyHz = 0;
    // Points of each frame that are windowed and transformed, the rest of the
    // N being zero; 0 (or N and more) takes all N.
    int appliedPoints = 0;
};

AnalysisStatus ComputeSpectrumWindow(const SpectrumWindowInput& input, const FftLpcSettings& settings,
                                     const SpectrumWindowOptions& options, SpectrumWindowState& state,
                                     const AnalysisProgress& progress = {}, AnalysisWorkspace& ws = defaultWorkspace());

}  // namespace sonmetra
