// Forward-looking moving average of 16-bit samples, in place.
//
// L = cut(count − M); for i = 0 … L−1 in increasing order the new sample i is
// (Σ samples[k], k = i … while k < i + M) / M, cut toward zero. The sums read
// only original values (positions below i are the ones already replaced), so
// a running sum gives the same numbers. Samples from L on keep their values.
// Each sample averages itself and the M − 1 after it: features move earlier by
// about (M − 1)/2 samples, which is the intended behaviour. L < 1 or M not
// above 0 changes nothing.
#pragma once

#include <cstdint>

namespace sonmetra {

void SmoothSamples(std::int16_t* samples, double count, double length);

}  // namespace sonmetra
