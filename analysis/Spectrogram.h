// Spectrogram of a range of one channel: C columns of P levels (dB after
// scaling) and, with formant tracking, five formants (Hz, 0 = none) per column.
//
//   1. step = (end − start) / C samples; LPC block L = cut(rate·0.001)·order
//      (the samples per millisecond are cut before multiplying);
//   2. column i at pos = i·step + start: N + 10 samples from cut(pos) when
//      N + pos + 10 ≤ total, otherwise the indices cut(pos) … while
//      j < cut(total − pos) (a position mixed with a remaining length, so late
//      columns read fewer samples and keep what their fresh, zeroed block held);
//   3. FftSpectrum (Hamming, pre-emphasis, resampled to P points up to the
//      frequency range);
//   4. formants: LpcSpectrum of the LPC block (skipSpectrum) and for each of the
//      first five formants of the most recent record: whole Hz when
//      (F + 0.5)/(B + 0.5) > 1.0, otherwise 0;
//   5. scaling: M = the largest level; v − M + dynamic range, below 0 → 0;
//   6. silence gate: a column whose largest level is below 30 % of the dynamic
//      range has no formants.
// One transform per column; the only allocation per column is the spline's
// work array. The columns are shared among threads (input.threads), each with
// its own workspace and blocks; the LPC block carries over from column to
// column only where its copy is short (near the channel's end), and those
// columns run last, in order, on the calling thread. The result, and the
// state `ws` is left in, are those of one thread taking the columns in order.
// The progress callback runs on the calling thread only, after each of its
// columns and while it waits, with the number of columns done by all; it may
// cancel.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "analysis/AnalysisSettings.h"
#include "analysis/AnalysisWorkspace.h"
#include "analysis/HugePages.h"

namespace sonmetra {

struct SpectrogramInput {
    const std::int16_t* samples = nullptr;
    double sampleCount = 0.0;  // the channel's total
    double startSample = 0.0;
    double endSample = 0.0;
    double rateHz = 0.0;
    int threads = 0;  // threads to share the columns: 0 one per processor core, 1 the calling thread only
};

struct SpectrogramResult {
    int columns = 0;
    int points = 0;
    LargeDoubles levels;                                // column-major: levels[c·points + k], k = 0 at 0 Hz
    std::vector<std::array<std::int16_t, 5>> formants;  // one frame per column, when tracked
    bool formantsFound = false;

    const double* column(int c) const { return levels.data() + static_cast<std::size_t>(c) * points; }
};

AnalysisStatus ComputeSpectrogram(const SpectrogramInput& input, const SpectrogramSettings& settings, int columns,
                                  int points, bool trackFormants, SpectrogramResult& result,
                                  const AnalysisProgress& progress = {}, AnalysisWorkspace& ws = defaultWorkspace());

}  // namespace sonmetra
