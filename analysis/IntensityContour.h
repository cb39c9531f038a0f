// Intensity contour: mean power in a sliding window, one value per sample.
//
//   1. nFrames = (count − window) / step, a real number; frames f = 0, 1, …
//      while f < nFrames;
//   2. begin = f·step + start, end = begin + window; the positions
//      begin, begin + 1, … while < end, each cut to a sample index, are summed
//      as (samples[i] − offset)² and the sum divided by the (possibly
//      fractional) window; 0.0 when the mean is below 1.0, otherwise
//      10·log10(mean) (linear = 0) or the mean; the value is written at the
//      same positions, a later frame overwriting an earlier one;
//   3. after the last written position every sample takes the last frame's
//      value; with no frame at all the contour is 0.0 throughout;
//   4. minimum and maximum over the contour (strictly smaller / larger
//      replaces; starting at 1e9 / −1e9); normalise ≠ 0 subtracts the minimum.
// Windows and steps are in samples. contour holds count values.
// Returns false (contour untouched) when step is not above 0.
#pragma once

#include <cstdint>

namespace sonmetra {

bool IntensityContour(const std::int16_t* samples, double* contour, double& minimum, double& maximum, double offset,
                      double start, double window, double step, double count, int normalise, int linear);

}  // namespace sonmetra
