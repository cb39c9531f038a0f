// Mean power of frames, one value per frame (the pitch track's power gate).
//
// Frame f = 0 … count−1: begin = f·step + start; sum of (samples[j] − offset)²
// for j = cut(begin), cut(begin) + 1, … while j < begin + frameLength;
// mean = sum / frameLength; value 0.0 when mean < 1.0, otherwise the mean
// (linear ≠ 0) or 10·log10(mean). Minimum starts at 1e8, maximum at −1e8,
// replaced on strictly smaller or larger values. normalise ≠ 0 subtracts the
// minimum from every value (maximum − minimum, minimum 0).
// Positions are in samples; samples must cover every frame.
#pragma once

#include <cstdint>

namespace sonmetra {

// Level of a mean power: 0.0 below 1.0 (silence), otherwise the mean itself
// (linear ≠ 0) or 10·log10(mean) dB. Shared by the frame and contour routines.
double PowerLevel(double meanPower, int linear);

// Sum of (samples[j] − offset)² over j = cut(begin) … while j < begin + frameLength:
// one frame of FrameIntensity, for callers that take the frames one at a time.
inline double FramePowerSum(const std::int16_t* samples, double offset, double begin, double frameLength) {
    double sum = 0.0;
    for (long j = static_cast<long>(begin); j < begin + frameLength; ++j) {
        const double v = samples[j] - offset;
        sum += v * v;
    }
    return sum;
}

void FrameIntensity(const std::int16_t* samples, double* values, double& minimum, double& maximum, double offset,
                    double start, double frameLength, double step, int count, int normalise, int linear);

}  // namespace sonmetra
