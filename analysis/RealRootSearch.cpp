#include "analysis/RealRootSearch.h"

#include <algorithm>
#include <cmath>

#include "analysis/PolyValue.h"

namespace sonmetra {
namespace {

constexpr double kTolerance = 1e-4;

double refine(const double* c, int p, double lo, double hi, double fLo, double fHi) {
    double estimate = hi;
    for (;;) {
        if (std::fabs(hi - lo) / std::max(std::fabs(hi), std::fabs(lo)) < kTolerance) break;
        const double mid = (hi + lo) / 2.0;
        estimate = mid;
        if (mid == hi || mid == lo) break;
        const double f = PolyValue(p, c, mid);
        if (f == 0.0) break;
        if (f * fLo > 0.0 && f * fHi < 0.0) {
            lo = mid;
            fLo = f;
        } else {
            hi = mid;
            fHi = f;
        }
    }
    return estimate;
}

}  // namespace

bool ScanForRealRoot(const double* c, int p, double& root) {
    double x = -1.2;
    double f0 = PolyValue(p, c, x);
    if (f0 == 0.0) {
        root = x;
        return true;
    }
    const double step = 1.0 / p;
    do {
        const double xPrev = x;
        x = x + step;
        const double f = PolyValue(p, c, x);
        if (f == 0.0) {
            root = x;
            return true;
        }
        if (f * f0 < 0.0) {
            root = refine(c, p, xPrev, x, f0, f);
            return true;
        }
        f0 = f;
    } while (x < 1.2);
    return false;
}

bool ExtractRealRoot(const double* c, int p, double* q, double* reversed) {
    double x = 0.0;
    if (ScanForRealRoot(c, p, x)) {
        q[0] = c[0];
        for (int i = 1; i <= p; ++i) q[i] = q[i - 1] * x + c[i];
        return true;
    }
    for (int i = 0; i <= p; ++i) reversed[i] = c[p - i];
    double y = 0.0;
    if (!ScanForRealRoot(reversed, p, y)) return false;
    q[p - 1] = c[p];
    for (int i = p - 2; i >= 0; --i) q[i] = q[i + 1] * y + c[i + 1];
    for (int i = 1; i <= p - 1; ++i) q[i] = q[i] / q[0];
    q[0] = 1.0;
    return true;
}

}  // namespace sonmetra
