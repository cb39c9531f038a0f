#include "analysis/RootToFormant.h"

#include <cmath>
#include <numbers>

namespace sonmetra {

FormantOfRoot RootToFormant(double p1, double p2, double sampleRateHz) {
    const double scale = sampleRateHz / (2.0 * std::numbers::pi);
    const double h = 0.5 * p1;
    const double disc = h * h - p2;
    FormantOfRoot f;
    if (disc < 0.0) {
        f.rootReal = -h;
        f.rootImag = std::sqrt(-disc);
        f.frequencyHz = h == 0.0 ? std::numbers::pi / 2.0 : std::atan2(f.rootImag, f.rootReal) * scale;
        f.bandwidthHz = -std::log(p2) * scale;
    } else {
        const double r = std::fabs(h) + std::sqrt(disc);
        f.rootImag = 0.0;
        if (p1 < 0.0) {
            f.frequencyHz = sampleRateHz / 2.0;
            f.rootReal = -r;
        } else {
            f.frequencyHz = 0.0;
            f.rootReal = r;
        }
        f.bandwidthHz = -std::log(r * r) * scale;
    }
    return f;
}

}  // namespace sonmetra
