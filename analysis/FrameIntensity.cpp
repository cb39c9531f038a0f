#include "analysis/FrameIntensity.h"

#include <cmath>

namespace sonmetra {

double PowerLevel(double meanPower, int linear) {
    if (meanPower < 1.0) return 0.0;
    return linear != 0 ? meanPower : 10.0 * std::log10(meanPower);
}

void FrameIntensity(const std::int16_t* samples, double* values, double& minimum, double& maximum, double offset,
                    double start, double frameLength, double step, int count, int normalise, int linear) {
    minimum = 1e8;
    maximum = -1e8;
    for (int f = 0; f < count; ++f) {
        const double begin = f * step + start;
        const double value = PowerLevel(FramePowerSum(samples, offset, begin, frameLength) / frameLength, linear);
        values[f] = value;
        if (value < minimum) minimum = value;
        if (value > maximum) maximum = value;
    }
    if (normalise != 0) {
        for (int f = 0; f < count; ++f) values[f] -= minimum;
        maximum -= minimum;
        minimum = 0.0;
    }
}

}  // namespace sonmetra
