#include "analysis/SmoothSamples.h"

#include <cmath>

namespace sonmetra {

void SmoothSamples(std::int16_t* samples, double count, double length) {
    if (!(length > 0.0)) return;
    const long last = static_cast<long>(count - length);
    if (last < 1) return;
    // Positions k with i ≤ k < i + M: ceil(M) of them.
    const long width = static_cast<long>(std::ceil(length));
    std::int64_t sum = 0;
    for (long k = 0; k < width; ++k) sum += samples[k];
    for (long i = 0; i < last; ++i) {
        const std::int64_t windowSum = sum;
        sum += samples[i + width] - static_cast<std::int64_t>(samples[i]);
        samples[i] = static_cast<std::int16_t>(std::trunc(static_cast<double>(windowSum) / length));
    }
}

}  // namespace sonmetra
