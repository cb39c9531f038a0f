// Cepstral F0 estimate of one frame.
//
//   1. m = log2(fftSize) for 128 … 4096, otherwise −1.0 at once;
//   2. copy the frame into x[1 …]: when position + L + 5 ≤ rangeLength, the
//      indices cut(position) … while j < position + L; otherwise cut(position) …
//      while j < rangeLength − position. The second bound mixes an absolute
//      position with a relative length, so near the end of a range fewer
//      samples (or none) are copied and the rest of x keeps earlier values;
//   3. periodic Hamming window of L points, zero padding to fftSize;
//   4. Fft; log spectrum 10·log10(P) of every bin (0.0 where P = 0); Fft again;
//      power cepstrum c[k] = re² + im², k < fftSize/2;
//   5. lo = cut(rate / highF0), hi = cut(rate / lowF0); c = 0 below lo and in [hi, fftSize/2);
//   6. natural spline through (t, c[lo + t]), t = 0 … n−1 with n = hi − lo, and
//      fine[lo10 + i] at t = i/10, i = 0 … 10n − 1, lo10 = cut(10·rate / highF0);
//      fine entries not written keep their earlier values;
//   7. first strict maximum of fine[lo10 … hi10 − 1] above 0.0
//      (hi10 = cut(10·rate / lowF0), which is also the index when none is above
//      0.0, so silence reads close to lowF0); index 0 becomes 1;
//   8. F0 = rate / (index/10); 0.0 outside [lowF0, highF0].
// samples is the channel's 16-bit block; position and rangeLength in samples.
#pragma once

#include <cmath>
#include <cstdint>

#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

// The samples step 2 copies: samples[first … stop) into x[1 … stop − first];
// nothing when stop ≤ first. L is the window length after its limit to fftSize.
struct CepstralFrameCopy {
    long first = 0;
    long stop = 0;
    bool whole = false;  // the first form: every x[1 … L] is this frame's own
};
inline CepstralFrameCopy CepstralFrameExtent(double position, double rangeLength, int L) {
    CepstralFrameCopy c;
    c.first = static_cast<long>(position);
    c.whole = position + L + 5 <= rangeLength;
    // j < bound for whole numbers j is j < ceil(bound).
    const double bound = c.whole ? position + L : rangeLength - position;
    c.stop = static_cast<long>(std::ceil(bound));
    return c;
}

double CepstralPitch(const std::int16_t* samples, double position, double rangeLength, double sampleRateHz,
                     double lowF0Hz, double highF0Hz, int fftSize, int windowLength,
                     AnalysisWorkspace& ws = defaultWorkspace());

// What a call leaves in the workspace besides its answer. Complete: every
// buffer as the steps above leave it. ForNextFrame, for a frame whose
// successor runs on the same workspace: the answer is the same, and so is
// everything a later frame reads (the frame array, the cepstrum, the fine
// entries the spline never writes), but the spline's fine entries are not
// written and the work arrays do not hold the whole second transform, which
// spares the evaluation of most of the spline and part of that transform.
enum class CepstralState { Complete, ForNextFrame };

double CepstralPitch(const std::int16_t* samples, double position, double rangeLength, double sampleRateHz,
                     double lowF0Hz, double highF0Hz, int fftSize, int windowLength, AnalysisWorkspace& ws,
                     CepstralState state);

}  // namespace sonmetra
