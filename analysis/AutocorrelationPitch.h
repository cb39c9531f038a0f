// Time-domain F0 estimate of one frame: the "AutoCorrolation" method.
//
//   1. The analysis window is centred where the cepstral frame is
//      (position + L/2) and spans at least three periods of the lowest F0
//      (length Lw = max(L, ceil(3·rate / lowF0))), kept inside [rangeStart, rangeEnd);
//   2. mean removed, Hann window;
//   3. autocorrelation r(τ) through a zero-padded transform long enough that
//      no lag up to the longest period wraps around (|X|² transformed again),
//      normalised r(τ)/r(0) and divided by the window's own normalised
//      autocorrelation, which undoes the window's taper so that a periodic
//      signal peaks near 1.0 at its period;
//   4. local maxima between the lags of highF0 and lowF0, each refined by a
//      parabola through its three neighbours to a sub-sample lag and height;
//   5. the strongest peak wins, with a small bonus of 0.01 per octave for the
//      shorter lag; then an octave check: a peak near a half or a third of
//      the winning lag with at least 85 % of its height takes over (repeated),
//      since a periodic signal correlates almost as well at two periods as at one;
//   6. voicing: a winning height below 0.45 is unvoiced (0.0).
// Returns F0 in Hz, 0.0 when unvoiced or outside [lowF0, highF0].
#pragma once

#include <cstdint>

#include "analysis/AnalysisWorkspace.h"

namespace sonmetra {

inline constexpr double kAutocorrelationVoicingThreshold = 0.45;

double AutocorrelationPitch(const std::int16_t* samples, double rangeStart, double rangeEnd, double position,
                            int windowLength, double sampleRateHz, double lowF0Hz, double highF0Hz,
                            AnalysisWorkspace& ws = defaultWorkspace());

}  // namespace sonmetra
