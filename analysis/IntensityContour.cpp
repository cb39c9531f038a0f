#include "analysis/IntensityContour.h"

#include <cmath>

#include "analysis/FrameIntensity.h"

namespace sonmetra {

bool IntensityContour(const std::int16_t* samples, double* contour, double& minimum, double& maximum, double offset,
                      double start, double window, double step, double count, int normalise, int linear) {
    if (!(step > 0.0) || !(window > 0.0)) return false;
    const long total = static_cast<long>(count);
    const double nFrames = (count - window) / step;
    long written = 0;  // one past the last written index
    double last = 0.0;
    for (long f = 0; f < nFrames; ++f) {
        const double begin = f * step + start;
        const double end = begin + window;
        double sum = 0.0;
        for (double i = begin; i < end; i += 1.0) {
            const long idx = static_cast<long>(i);
            if (idx >= total) break;
            const double v = samples[idx] - offset;
            sum += v * v;
        }
        const double value = PowerLevel(sum / window, linear);
        for (double i = begin; i < end; i += 1.0) {
            const long idx = static_cast<long>(i);
            if (idx >= total) break;
            contour[idx] = value;
            written = idx + 1;
        }
        last = value;
    }
    for (long i = written; i < total; ++i) contour[i] = last;

    double lo = 1e9, hi = -1e9;
    for (long i = 0; i < total; ++i) {
        if (contour[i] < lo) lo = contour[i];
        if (contour[i] > hi) hi = contour[i];
    }
    if (normalise != 0) {
        for (long i = 0; i < total; ++i) contour[i] -= lo;
        hi -= lo;
        lo = 0.0;
    }
    minimum = lo;
    maximum = hi;
    return true;
}

}  // namespace sonmetra
